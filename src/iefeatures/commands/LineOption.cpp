#include "iefeatures/commands/LineOption.h"

#include "iefeatures/commands/LineFile.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/line/LineMatch.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace companion
{
namespace
{

QStringList texts(const std::vector<std::string>& words)
{
    QStringList found;
    for (const std::string& word : words)
        found += QString::fromStdString(word);
    return found;
}

} // namespace

void LineOption::addOptions(CLI::App& app, CLI::App& group)
{
    auto* line = group.add_option("--line", m_file, "Cameras of this inventory (iefeatures line)");
    line->type_name("FILE")->check(companion::isGiven("Name a file."));
    if (CLI::Option* all = group.get_option_no_throw("--all"))
        line->excludes(all);
    app.add_option("--camera", m_names, "Of an inventory: these cameras alone, by their names there")
        ->type_name("NAME")
        ->check(companion::isGiven("Name a camera."))
        ->needs(line);
}

int LineOption::prepare(Console& console, CameraSelection& selection)
{
    if (m_file.empty())
        return ExitWell;
    if (!readInventoryOrTell(console, m_file, m_inventory))
        return ExitInputOutput;
    if (!hasCameras(console, m_inventory, texts(m_names)))
        return ExitUsage;
    selection.chooseAlsoBy([this](const std::vector<ListedCamera>& cameras) { return choose(cameras); });
    return ExitWell;
}

CameraSelection::Choice LineOption::choose(const std::vector<ListedCamera>& cameras) const
{
    const QStringList names = texts(m_names);
    CameraSelection::Choice choice;
    for (const LineMatch& match : matchLine(m_inventory, cameras)) {
        if (!match.wanted || (!names.isEmpty() && !names.contains(match.wanted->name)))
            continue;
        if (match.camera && !match.isOther)
            choice.cameras.push_back(*match.camera);
        else
            choice.misses +=
                "The camera \"" + printable(match.wanted->name) + "\" of the inventory is not there.";
    }
    return choice;
}

} // namespace companion
