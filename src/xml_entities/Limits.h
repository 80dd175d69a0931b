// What a text may hold that goes to a parser: of what is beyond these, memory or time grow out of all
// measure.
#pragma once

#include <cstddef>

namespace xml_entities
{

// A document takes about 250 bytes for each. An export may write a block of 2^20 lines, an element each,
// which an import has to take back.
constexpr size_t maximumElements = 2'000'000;
// Of one element; parsers compare the name of each with those of all others.
constexpr size_t maximumAttributes = 256;

} // namespace xml_entities
