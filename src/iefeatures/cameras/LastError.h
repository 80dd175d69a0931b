// What the camera library had to say about the last failure, beyond its status.
#pragma once

#include <QString>

namespace companion
{

// Of the calling thread.
QString lastErrorText();

} // namespace companion
