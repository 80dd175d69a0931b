// What the RegValue lines of a features file have to say, from the camera's memory alone. GigE Vision.
#pragma once

#include "camera_emulator/EmulatedCamera.h"
#include "jobs/file/FeaturesFile.h"

#include <QStringList>

namespace tests
{

// A sentence for every line that does not say what lies in the camera now. A register that names this
// connection's own port is passed over: no two connections have the same.
QStringList registerDifferences(const ie::ComplexFeature& feature, const emu::EmulatedCamera& camera);

} // namespace tests
