// Formula texts that grow by plain substitution: names may be digits, and a text of digits multiplies.
#pragma once

#include <QString>

namespace ie
{

// Characters of the longest formula text that is computed.
constexpr int kLongestFormula = 1024 * 1024;

// Replaces every occurrence of `from` (not empty), as QString::replace() does. False where the text would be
// longer than kLongestFormula then; it stays as it is.
bool replaceBounded(QString& text, const QString& from, const QString& to);

} // namespace ie
