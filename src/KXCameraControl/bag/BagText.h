// The text of a feature bag: the GenApi persistence text (GenICam GenApi, "Streaming").
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kx
{

struct BagIdentity
{
    std::string vendor;
    std::string model;
    std::string deviceVersion;
};

// One line of a bag. `selectors` is filled for lines of the form "Name<TAB>{Sel=Val,...}<TAB>Value".
struct BagEntry
{
    std::string name;
    std::vector<std::pair<std::string, std::string>> selectors;
    std::string value;
};

// Whether the entry reads as it was written: line breaks have no form in this text, tabs and braces have a
// meaning.
bool hasForm(const BagEntry& entry);
// Of entries that have a form. `remarks` stand as comments before them; line breaks in these and in the
// identity become blanks.
std::string bagText(const BagIdentity& identity, const std::vector<BagEntry>& entries,
                    const std::vector<std::string>& remarks = {});
// Of one bag; a line of three characters becomes an entry of a hundred bytes.
constexpr size_t mostBagEntries = size_t(1) << 20;
// False unless the text begins with the persistence format's identification line, and for more entries.
bool parseBag(const std::string& text, std::vector<BagEntry>& entries, std::string& error);

} // namespace kx
