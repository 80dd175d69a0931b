#pragma once

namespace styled
{

// Whether half-transparent windows are blended with what lies behind them. Without that the margin of a
// shadow would be black.
bool screenBlends();

} // namespace styled
