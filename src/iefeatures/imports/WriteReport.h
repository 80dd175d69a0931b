// Single settings that were written, told to people, scripts and the audit log.
#pragma once

#include "iefeatures/console/Console.h"
#include "iefeatures/imports/FeatureWrites.h"

#include <vector>

namespace companion
{

AuditEntry auditEntryOf(const QString& command, const FeatureWrites& result);

// What is said of writes that may have been carried out; `names`: printable.
QString doubtText(const QString& names);

// Each change as it was made, what is in doubt, then each camera's verdict. Gives the ExitCode of all.
int tellWrites(Console& console, const std::vector<FeatureWrites>& results);

} // namespace companion
