// Writing the text and reading it back.
#include "KXCameraControl/bag/BagText.h"

#include <algorithm>
#include <sstream>
#include <string_view>

namespace kx
{
namespace
{

constexpr char kIdentification[] = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}";

using Selectors = std::vector<std::pair<std::string, std::string>>;

// "{Sel=Val,Sel=Val}" -> pairs. None when it is no such text.
Selectors selectorsIn(const std::string& text)
{
    if (text.size() < 2 || text.front() != '{' || text.back() != '}')
        return {};
    Selectors selectors;
    std::istringstream parts(text.substr(1, text.size() - 2));
    std::string part;
    while (std::getline(parts, part, ',')) {
        part.erase(0, part.find_first_not_of(' '));
        const size_t equals = part.find('=');
        if (equals == std::string::npos || equals == 0)
            return {};
        selectors.emplace_back(part.substr(0, equals), part.substr(equals + 1));
    }
    return selectors;
}

// Of a value "{...}<TAB>...".
Selectors selectorsBefore(const std::string& value)
{
    const size_t tab = value.find('\t');
    return tab == std::string::npos ? Selectors() : selectorsIn(value.substr(0, tab));
}

bool fitsOnALine(const std::string& text)
{
    return text.find_first_of(std::string("\n\r\0", 3)) == std::string::npos;
}

// What a camera says of itself is no line of its own.
std::string comment(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r' || c == '\0'; }, ' ');
    return "# " + text + "\n";
}

// Without its end; `begin` is moved behind that.
std::string_view lineAt(const std::string& text, size_t& begin)
{
    const size_t end = std::min(text.find('\n', begin), text.size());
    std::string_view line = std::string_view(text).substr(begin, end - begin);
    begin = end + 1;
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    return line;
}

} // namespace

bool hasForm(const BagEntry& entry)
{
    return !entry.name.empty() && entry.name[0] != '#' && entry.name.find('\t') == std::string::npos &&
           fitsOnALine(entry.name) && fitsOnALine(entry.value) && selectorsBefore(entry.value).empty();
}

std::string bagText(const BagIdentity& identity, const std::vector<BagEntry>& entries,
                    const std::vector<std::string>& remarks)
{
    std::string out = kIdentification;
    out += "\n# GenApi persistence file (version 3.0.0)\n";
    out += comment("Device = " + identity.vendor + "::" + identity.model +
                   " -- Device version = " + identity.deviceVersion);
    for (const std::string& remark : remarks)
        out += comment(remark);
    for (const BagEntry& entry : entries)
        out += entry.name + "\t" + entry.value + "\n";
    return out;
}

bool parseBag(const std::string& text, std::vector<BagEntry>& entries, std::string& error)
{
    const auto lines = static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
    entries.reserve(entries.size() + std::min(lines, mostBagEntries));
    size_t number = 0;
    for (size_t begin = 0; begin < text.size();) {
        const std::string_view line = lineAt(text, begin);
        if (++number == 1) {
            if (line != kIdentification) {
                error = "it does not begin with the identification line of a GenApi persistence file";
                return false;
            }
            continue;
        }
        if (line.empty() || line[0] == '#')
            continue;
        const size_t tab = line.find('\t');
        if (tab == std::string_view::npos || tab == 0) {
            error = "line " + std::to_string(number) + " is no \"name<TAB>value\"";
            return false;
        }
        if (entries.size() == mostBagEntries) {
            error = "line " + std::to_string(number) + " is one more than the " +
                    std::to_string(mostBagEntries) + " entries that are possible";
            return false;
        }
        BagEntry& entry = entries.emplace_back();
        entry.name = line.substr(0, tab);
        entry.value = line.substr(tab + 1);
        entry.selectors = selectorsBefore(entry.value);
        if (!entry.selectors.empty())
            entry.value.erase(0, entry.value.find('\t') + 1);
    }
    if (number == 0)
        error = "it is empty";
    return number > 0;
}

} // namespace kx
