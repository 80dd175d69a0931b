// What scripts get of every command: objects, one a line, as docs/iefeatures.schema.json has them. Keys are
// in lower case with underscores; what is not known is null.
#pragma once

#include "iefeatures/console/Console.h"

#include <nlohmann/json.hpp>

#include <QString>
#include <QStringList>

#include <string>

namespace companion
{

// Counts up when a key goes, or comes to mean something else; new keys leave it as it is.
constexpr int kJsonFormat = 1;

// {"format_version":1,"command":"import","kind":"result",...} and a line feed. Of text that is no UTF-8 the
// wrong bytes become U+FFFD.
std::string jsonLine(const std::string& command, const char* kind, const Json& fields);

// An object by itself as a line.
std::string lineOf(const Json& object);

Json json(const QString& text);
Json json(const QStringList& texts);
// Null for a null text, and for an empty one.
Json jsonUnlessNull(const QString& text);
Json jsonUnlessEmpty(const QString& text);
// The path where a file or folder stands there, else null.
Json jsonOfExisting(const QString& path);

} // namespace companion
