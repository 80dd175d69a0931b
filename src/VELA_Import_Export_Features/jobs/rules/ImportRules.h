// Rules that exports and imports share.
#pragma once

#include <QString>
#include <QStringList>

namespace ie
{

// Names that are neither exported as features nor ever written: identity, and what would switch the user set.
bool isProtectedFeature(const QString& name);

// What imports leave alone on every camera, beside the protected names: network settings and the like.
const QStringList& importSkipList();

} // namespace ie
