// Files of feature bags, written whole or not at all.
#pragma once

#include <string>

namespace kx
{

// Beside the file of that name and then in its place, stored on the disk: whoever looks at `path` sees the
// older file or the whole new one, and of two writers at the same moment the last one wins. Permissions of an
// older file stay, a link is followed. Where the folder allows no second file, and into devices and pipes, it
// is written in place: a failure leaves nothing of that name then, or an empty file where the folder lets
// nobody remove it, unless it could not be opened. On Windows a link is replaced, and nothing is written in
// place. Paths are in UTF-8. Gives the system's reason on failure, or an empty text.
std::string writeBagFile(const std::string& path, const std::string& text);

} // namespace kx
