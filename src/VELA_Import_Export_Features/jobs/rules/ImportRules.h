// Rules that exports and imports share.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QString>
#include <QStringList>

namespace ie
{

// Whether a status only says that the operation does not apply to that node now: 0x80000004 and 0x80000100 to
// 0x80000106. Every other failure means that the line or the camera failed.
bool isNotApplicable(KX_Status status);

// Names that are neither exported as features nor ever written: identity, and what would switch the user set.
bool isProtectedFeature(const QString& name);

// What imports leave alone on every camera, beside the protected names: network settings and the like.
const QStringList& importSkipList();

} // namespace ie
