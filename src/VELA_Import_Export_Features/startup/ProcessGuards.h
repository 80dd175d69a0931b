// One copy at a time, and a trace of every crash; written once, against the platform's calls.
#pragma once

#include "startup/PlatformCalls.h"

namespace ProcessGuards
{

// The calls that the guards use; null puts the system's own back.
void setCalls(const Platform::Calls* calls);

// The instance mutex of this process; null until IsAlreadyRunning() made it.
Platform::Handle instanceMutex();
void closeInstanceMutex();

// Makes WriteCrashDump the filter of unhandled exceptions.
void installCrashFilter();

} // namespace ProcessGuards

// True when another copy runs; its window is shown and brought to the front. Otherwise this process owns the
// instance mutex from now on.
bool IsAlreadyRunning();

// The unhandled-exception filter; the process ends after it.
long WriteCrashDump(Platform::ExceptionPointers* exceptionPointers);
