// Work that is done beside other work.
#pragma once

#include <future>

namespace kx
{

// For std::async: on a thread of its own; where the system gives no more of them, when its result is asked
// for.
constexpr auto beside = std::launch::async | std::launch::deferred;

} // namespace kx
