// The functions of one producer, loaded. It is never unloaded: threads of its own may still run.
#pragma once

#include "gentl/GenTl.h"

#include <string>

namespace gentl_host
{

template <class Signature>
struct Function;

template <class... Parameters>
struct Function<gentl::Error(Parameters...)>
{
    const char* name;
    bool isNeeded;
    gentl::Error (*address)(Parameters...) = nullptr;

    explicit operator bool() const { return address != nullptr; }
};

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
