// The entities that a text declares within itself, and what they grow to.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace xml_entities
{

// Entities that stand for plain text: a value holds no markup, also none spelled by numbers, and refers only
// to entities that were declared before it, so nothing leads in circles. Parameter entities and those of
// other files are refused.
class Entities
{
public:
    // What stands between "<!ENTITY" and ">". Null, or what is wrong.
    const char* declare(std::string_view declaration);

    // All references of a piece of text or of an attribute's value; adds the bytes that declared entities
    // grow to. What every text may say (&amp; and its like, numbers) adds nothing.
    const char* addExpansion(std::string_view text, size_t& size) const;

    // What a reference to a declared entity grows to, in bytes; nothing for any other name.
    std::optional<size_t> sizeOf(std::string_view name) const;

private:
    std::map<std::string, size_t, std::less<>> m_sizes; // in bytes, fully expanded
};

} // namespace xml_entities
