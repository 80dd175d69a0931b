// Names and addresses of cameras, written as commands do it: with the audit log around it, and told.
#pragma once

#include "iefeatures/console/Console.h"
#include "iefeatures/imports/AuditLog.h"
#include "iefeatures/network/NetworkTask.h"

#include <vector>

namespace companion
{

struct NetworkJob
{
    ListedCamera camera;
    NetworkTask task;
};

// All cameras at the same time; of each first what is forced. Gives an ExitCode. Nobody is asked, neither for
// agreement nor for addresses: networkObjections() comes before.
int writeNetworks(Console& console, const Look& look, const QString& command, const AuditRule& audit,
                  const std::vector<NetworkJob>& jobs);

} // namespace companion
