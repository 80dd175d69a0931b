// What the camera library had to say about the last failure, beyond its status.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QString>

namespace companion
{

// Of the calling thread.
QString lastErrorText();

// The cause of a failure, a sentence: the status, but for a connection that is lost what `error`, the last
// error, says of it. There is more than one way to lose it, another host among them.
QString failureText(KX_Status status, const QString& error);

} // namespace companion
