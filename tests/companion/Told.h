// What commands tell of the settings that they have made, whatever steps they have taken.
#pragma once

#include "companion/CompanionFixture.h"

#include <nlohmann/json.hpp>

#include <set>
#include <string>

namespace tests
{

using Names = std::set<std::string>;

// "Level" of "Level (Slot=0)".
inline std::string withoutSelectors(const std::string& name)
{
    return name.substr(0, name.find(" ("));
}

// A change of the inventory's, which stands in the log beside those of cameras.
inline bool isOfInventory(const std::string& name)
{
    return name.rfind("inventory: ", 0) == 0;
}

struct Told
{
    Names changed;
    Names inDoubt;
    Names notApplied;
    bool isAnything = false;
};

// All results of a run together.
inline Told toldBy(const Result& run)
{
    Told told;
    const auto add = [](const Json& result, const char* list, Names& names) {
        for (const auto& name : result.value(list, Json::array()))
            names.insert(withoutSelectors(name.get<std::string>()));
    };
    for (const Json& object : objects(run)) {
        if (object["kind"] != "result")
            continue;
        told.isAnything = true;
        add(object, "changed", told.changed);
        add(object, "in_doubt", told.inDoubt);
        add(object, "not_applied", told.notApplied);
    }
    return told;
}

// The same of lines of the audit log.
inline Told auditedBy(const QByteArray& lines)
{
    Told told;
    const auto add = [](const Json& line, const char* list, Names& names) {
        for (const auto& change : line.value(list, Json::array()))
            if (change["feature"].is_string() && !isOfInventory(change["feature"].get<std::string>()))
                names.insert(change["feature"].get<std::string>());
    };
    for (const QByteArray& text : lines.split('\n')) {
        if (text.isEmpty())
            continue;
        const Json line = Json::parse(text.toStdString());
        told.isAnything = true;
        add(line, "changes", told.changed);
        add(line, "in_doubt", told.inDoubt);
    }
    return told;
}

} // namespace tests
