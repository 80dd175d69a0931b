// One look at each declaration and each reference (XML 1.0, 4.1 to 4.5).
#include "xml_entities/Entities.h"

#include <algorithm>
#include <limits>

namespace xml_entities
{

namespace
{

constexpr std::string_view spaces = " \t\r\n";

std::string_view trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(spaces);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(spaces) - first + 1);
}

bool isPredefined(std::string_view name)
{
    for (const std::string_view known : {"amp", "lt", "gt", "quot", "apos"}) {
        if (name == known)
            return true;
    }
    return false;
}

// "#60", "#x3C" and the like become markup when the entity is put in. Leading zeros change nothing.
bool spellsMarkup(std::string_view name)
{
    const bool isHexadecimal = name.size() > 1 && name[1] == 'x';
    name.remove_prefix(isHexadecimal ? 2 : 1);
    while (!name.empty() && name.front() == '0')
        name.remove_prefix(1);
    if (isHexadecimal)
        return name == "3C" || name == "3c" || name == "26";
    return name == "60" || name == "38";
}

size_t sum(size_t first, size_t second)
{
    return first > std::numeric_limits<size_t>::max() - second ? std::numeric_limits<size_t>::max()
                                                               : first + second;
}

} // namespace

const char* Entities::declare(std::string_view declaration)
{
    const std::string_view rest = trimmed(declaration);
    const auto nameEnd = rest.find_first_of(spaces);
    if (nameEnd == std::string_view::npos)
        return "it declares an entity without a value";
    const std::string_view name = rest.substr(0, nameEnd);
    const std::string_view quoted = trimmed(rest.substr(nameEnd));
    if (name == "%")
        return "it declares parameter entities";
    const bool isQuoted = quoted.size() >= 2 && (quoted[0] == '"' || quoted[0] == '\'') &&
                          quoted.find(quoted[0], 1) == quoted.size() - 1;
    if (!isQuoted)
        return "it declares an entity that stands elsewhere";
    const std::string_view value = quoted.substr(1, quoted.size() - 2);
    if (value.find_first_of("<%") != std::string_view::npos)
        return "it declares an entity that holds markup";
    for (auto at = value.find("&#"); at != std::string_view::npos; at = value.find("&#", at + 1)) {
        const std::string_view reference = value.substr(at + 1);
        if (spellsMarkup(reference.substr(0, reference.find(';'))))
            return "it declares an entity that holds markup";
    }
    size_t size = value.size();
    if (const char* problem = addExpansion(value, size))
        return problem;
    m_sizes.emplace(name, size); // of two declarations the first one counts
    return nullptr;
}

const char* Entities::addExpansion(std::string_view text, size_t& size) const
{
    for (auto at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
        const std::string_view reference = text.substr(at + 1);
        const std::string_view name = reference.substr(0, reference.find(';'));
        if (isPredefined(name) || (!name.empty() && name[0] == '#'))
            continue;
        const std::optional<size_t> known = sizeOf(name);
        if (!known)
            return "it refers to an entity that it does not declare before";
        size = sum(size, *known);
    }
    return nullptr;
}

std::optional<size_t> Entities::sizeOf(std::string_view name) const
{
    const auto known = m_sizes.find(name);
    return known == m_sizes.end() ? std::nullopt : std::optional<size_t>(known->second);
}

} // namespace xml_entities
