// What the producer does wrong on demand: CAMERA_EMULATOR_GENTL_FAULTS, several separated by commas,
//   [PRODUCER:]FUNCTION=KIND[@N]
// PRODUCER is the name of the producer's file without ".cti"; without it all copies do it. From the N-th call
// of the function on (1, the first):
//   crash     a write to nowhere
//   hang      the call never comes back
//   slow      it takes 50 ms longer
//   leak      64 MB more in memory with each call
//   long      a success that gives a length or a number beyond all bounds
//   -1005     this error, or another of the standard's
#pragma once

#include "gentl/GenTl.h"

#include <string>
#include <vector>

namespace producer
{

struct Fault
{
    gentl::Error error = gentl::Success;
    bool isTooLong = false;
};

// At the beginning of each function. May not come back.
Fault enter(const char* function);

// The parts of a comma-separated setting that are for this copy of the producer.
std::vector<std::string> settings(const char* variable);

} // namespace producer

// What every exported function begins with.
#define PRODUCER_ENTER(name)                                                                                 \
    const ::producer::Fault fault = ::producer::enter(#name);                                                \
    if (fault.error != ::gentl::Success)                                                                     \
    return ::producer::fail(fault.error, "as it was told to")
