// What must be known of a foreign XML text before QDomDocument may parse it.
#pragma once

#include <QString>

namespace ie
{

// Elements nested deeper overflow a thread's stack in QDomDocument (at about 100,000 levels).
constexpr int kMaximumXmlDepth = 1000;
// Bytes that a text's entity references may add up to at most. Qt bounds entities in entities, but not
// one long entity that is referenced over and over.
constexpr qint64 kMaximumXmlExpansion = 16 * 1024 * 1024;

// Whether QDomDocument can parse `text` within bounded stack and memory: elements nested at most
// kMaximumXmlDepth deep and within xml_entities/Limits.h, entities that stand for plain text only (see
// xml_entities), which grow to at most kMaximumXmlExpansion bytes. Says nothing about being well-formed.
// Linear in the text, no recursion.
bool isSafeToParse(const QString& text);

} // namespace ie
