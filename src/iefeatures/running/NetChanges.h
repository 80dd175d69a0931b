// What was changed in the end, where values were moved to and fro on the way.
#pragma once

#include "iefeatures/running/ObservedChanges.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <map>
#include <vector>

namespace companion
{

// The selectors of each feature, as a camera's description names them, with the selectors' own.
using Selectors = std::map<QString, QStringList>;
Selectors selectorsIn(const QByteArray& description);

// One change for each thing that has another value than before, in the order of the first ones. A selected
// feature is another thing under each value of its selectors: what moved there stands in `under`.
std::vector<Change> netChanges(const std::vector<Change>& changes, const Selectors& selectors);

// "Height", "Gain (GainSelector=Red)", "Gain (register 77824)"
QString titleOf(const Change& change);
QStringList titlesOf(const std::vector<Change>& changes);

} // namespace companion
