#include "iefeatures/cameras/CameraSelection.h"

#include "iefeatures/console/Text.h"

#include <CLI/CLI.hpp>

#include <set>

namespace companion
{

void CameraSelection::addOptions(CLI::App& app)
{
    auto* group = app.add_option_group("Cameras", "Which cameras; several options choose more cameras");
    auto* all = group->add_flag("--all", m_all, "Every camera that is found");
    const auto add = [&](const std::string& name, Words& words, const std::string& help) {
        group->add_option(name, words, help)->excludes(all);
    };
    add("--serial", m_serials, "Cameras of these serial numbers");
    add("--name", m_names, "Cameras of these user names (a replaced camera keeps its name, not its number)");
    add("--address", m_addresses, "Cameras at these addresses");
    add("--model", m_models, "All cameras of these models");
    group->require_option(1, 0);
}

CameraSelection::Choice CameraSelection::bySerial(const Words& serials,
                                                  const std::vector<ListedCamera>& cameras)
{
    CameraSelection selection;
    selection.m_serials = serials;
    return selection.choose(cameras);
}

CameraSelection::Choice CameraSelection::choose(const std::vector<ListedCamera>& cameras) const
{
    Choice choice;
    if (m_all) {
        choice.cameras = cameras;
        if (cameras.empty())
            choice.misses += "No camera was found.";
        return choice;
    }
    std::set<size_t> chosen;
    const auto take = [&](const Words& words, QString ListedCamera::*field, const char* kind) {
        for (const std::string& word : words) {
            const QString wanted = QString::fromStdString(word);
            bool isFound = false;
            for (size_t i = 0; i < cameras.size(); ++i) {
                if (cameras[i].*field != wanted)
                    continue;
                chosen.insert(i);
                isFound = true;
            }
            if (!isFound)
                choice.misses += QString("No camera has the %1 \"%2\".").arg(kind, printable(wanted));
        }
    };
    take(m_serials, &ListedCamera::serial, "serial number");
    take(m_names, &ListedCamera::userName, "user name");
    take(m_addresses, &ListedCamera::address, "address");
    take(m_models, &ListedCamera::model, "model name");
    for (const size_t i : chosen)
        choice.cameras.push_back(cameras[i]);
    return choice;
}

} // namespace companion
