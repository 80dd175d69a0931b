// What an emulated camera with a real description needs in its memory for a features file to be possible.
#pragma once

#include <QByteArray>
#include <QDomElement>
#include <QMap>
#include <QString>

namespace tests
{

// A seed for the emulator: a firmware version and a model, and what the first needs to be there and to have a
// length.
QByteArray seedFor(const QMap<QString, QDomElement>& nodes);

} // namespace tests
