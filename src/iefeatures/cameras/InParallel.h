// The same work on many cameras at once.
#pragma once

#include <cstddef>
#include <functional>

namespace companion
{

// Calls `work` for 0 to count-1, each once, on as many threads as the suite supports cameras in one batch.
// Returns when all are done. `work` must not throw.
void inParallel(size_t count, const std::function<void(size_t)>& work);

} // namespace companion
