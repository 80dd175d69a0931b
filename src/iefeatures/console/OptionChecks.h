// What the values of options are asked for before anything is done.
#pragma once

#include <functional>
#include <string>

namespace companion
{

// For CLI::Option::check(): an empty value is answered with `demand`. A script whose variable is unset gives
// one, and must not mean anything by it.
inline std::function<std::string(const std::string&)> isGiven(const char* demand)
{
    return [demand](const std::string& value) { return std::string(value.empty() ? demand : ""); };
}

} // namespace companion
