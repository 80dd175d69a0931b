// Single settings that were written, told to people, scripts and the audit log.
#pragma once

#include "iefeatures/console/Console.h"
#include "iefeatures/imports/FeatureWrites.h"

#include <vector>

namespace companion
{

AuditEntry auditEntryOf(const QString& command, const FeatureWrites& result);

// Each change as it was made, then each camera's verdict.
void tellWrites(Console& console, const std::vector<FeatureWrites>& results);

} // namespace companion
