// What Windows takes for a file's name. Compiled on every system: it is a rule about texts.
#pragma once

#include <QString>

namespace ie
{

// Whether Windows makes a file of exactly that name in the folder that it is joined to, by its rules for file
// names (Microsoft, "Naming Files, Paths, and Namespaces"): no sign that stands for something else (a colon
// begins a stream of another file), no blank or full stop at the end (it would be cut off), and no device's
// name before the first full stop.
bool isWindowsFileName(const QString& name);

} // namespace ie
