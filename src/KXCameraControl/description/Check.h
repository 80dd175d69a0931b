// Whether a description may go to a parser.
#pragma once

#include <cstddef>
#include <string>

namespace kx
{

// What is handed to the XML parser; the largest descriptions in use stay below a fifth of it.
constexpr size_t maximumParsedBytes = 16u << 20;
constexpr unsigned maximumXmlDepth = 1000;

// Whether the text may go to the XML parser: one well-balanced document element of at most maximumXmlDepth
// levels and maximumParsedBytes, what its entities grow to included, and within xml_entities/Limits.h. A
// document type may declare entities that stand for plain text (see Entities); what it names outside the
// text, and parameter entities, play no part.
bool isParsable(const std::string& text, std::string& problem);

} // namespace kx
