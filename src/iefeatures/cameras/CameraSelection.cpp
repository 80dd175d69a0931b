#include "iefeatures/cameras/CameraSelection.h"

#include "iefeatures/console/OptionChecks.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace companion
{
namespace
{

QString otherNumber(unsigned expected, size_t found)
{
    return QString("%1 camera(s) were expected, %2 found.")
        .arg(expected)
        .arg(found == 1 ? QString("1 was") : QString("%1 were").arg(found));
}

bool contains(const std::vector<ListedCamera>& cameras, const ListedCamera& one)
{
    return std::any_of(cameras.begin(), cameras.end(), [&](const ListedCamera& camera) {
        return camera.device.nDeviceID == one.device.nDeviceID;
    });
}

} // namespace

void CameraSelection::addSelectors(CLI::App& group, CLI::Option* all)
{
    const auto add = [&](const char* name, Words& words, const char* help) {
        CLI::Option* option = group.add_option(name, words, help);
        option->check(companion::isGiven("An empty value chooses no camera."));
        if (all)
            option->excludes(all);
    };
    add("--serial", m_serials, "Cameras of these serial numbers");
    add("--name", m_names, "Cameras of these user names (a replaced camera keeps its name, not its number)");
    add("--address", m_addresses, "Cameras at these addresses");
    add("--mac", m_macs, "Cameras of these MAC addresses");
    add("--model", m_models, "All cameras of these models");
}

void CameraSelection::addOptions(CLI::App& app)
{
    addOptions(app, nullptr, nullptr);
}

void CameraSelection::addOptions(CLI::App& app, const char* more, const char* help)
{
    addChoice(app, more, help).require_option(1, 0);
}

void CameraSelection::addOptional(CLI::App& app)
{
    addChoice(app, nullptr, nullptr);
}

CLI::App& CameraSelection::addChoice(CLI::App& app, const char* more, const char* help)
{
    auto* group = app.add_option_group(kGroup, "Which cameras; several options choose more cameras");
    if (more)
        group->add_option(more, m_more, help)->type_name("S")->check(companion::isGiven("Name a camera."));
    addSelectors(*group, group->add_flag("--all", m_all, "Every camera that is found"));
    addCount(app);
    return *group;
}

void CameraSelection::addFilters(CLI::App& app)
{
    m_isFilter = true;
    addSelectors(*app.add_option_group(kGroup, "Of a folder: which cameras; every one without these"),
                 nullptr);
    addCount(app);
}

void CameraSelection::addExpect(CLI::App& app)
{
    m_isFilter = true;
    addCount(app);
}

void CameraSelection::addCount(CLI::App& app)
{
    app.add_option("--expect", m_expected, "Do nothing unless exactly so many cameras are chosen")
        ->type_name("N");
}

// In the order in which they are told to be missing.
std::vector<CameraWord> CameraSelection::words() const
{
    std::vector<CameraWord> all;
    std::transform(m_more.begin(), m_more.end(), std::back_inserter(all), cameraWordOrSerial);
    const auto take = [&](const Words& values, const CameraTrait& trait) {
        for (const std::string& value : values)
            all.push_back({&trait, QString::fromStdString(value)});
    };
    take(m_serials, kBySerial);
    take(m_names, kByName);
    take(m_addresses, kByAddress);
    take(m_macs, kByMac);
    take(m_models, kByModel);
    return all;
}

CameraSelection::Choice CameraSelection::choose(const std::vector<ListedCamera>& cameras) const
{
    Choice choice;
    const Choice others = m_other ? m_other(cameras) : Choice();
    const std::vector<CameraWord> wanted = words();
    for (const ListedCamera& camera : cameras)
        if (takesAll() || contains(others.cameras, camera) ||
            std::any_of(wanted.begin(), wanted.end(),
                        [&](const CameraWord& word) { return word.fits(camera); }))
            choice.cameras.push_back(camera);
    for (const CameraWord& word : wanted)
        if (std::none_of(cameras.begin(), cameras.end(),
                         [&](const ListedCamera& camera) { return word.fits(camera); }))
            choice.misses += word.missing();
    choice.misses += others.misses;
    if (takesAll() && cameras.empty())
        choice.misses += "No camera was found.";
    if (m_expected && *m_expected != choice.cameras.size())
        choice.misses += otherNumber(*m_expected, choice.cameras.size());
    return choice;
}

} // namespace companion
