// The functions of one producer, loaded.
#pragma once

#include "gentl/GenTl.h"
#include "gentl_host/LibraryFile.h"

#include <string>

namespace gentl_host
{

using namespace gentl; // the parameters in the table are spelled as the standard's

struct Producer
{
// NOLINTNEXTLINE(bugprone-macro-parentheses): a list of parameters brings its own
#define GENTL_MEMBER(name, parameters, isNeeded) Function<Error parameters> name{#name, isNeeded};
    GENTL_FUNCTIONS(GENTL_MEMBER)
#undef GENTL_MEMBER

    // What stands in the way, or an empty text.
    std::string load(const std::string& path);
};

} // namespace gentl_host
