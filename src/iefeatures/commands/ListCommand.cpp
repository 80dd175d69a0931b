#include "iefeatures/commands/ListCommand.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/cameras/ListReport.h"
#include "iefeatures/cameras/SearchPlaces.h"
#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <thread>

namespace companion
{
namespace
{

// A Ctrl-C is noticed within this.
constexpr std::chrono::milliseconds kShortPause{50};

// Of those that are in use.
void nameControllers(const World& world, std::vector<ListedCamera>& cameras)
{
    inParallel(cameras.size(), [&](size_t i) {
        if (cameras[i].device.nStatus == KX_AVAILABILITY_IN_USE)
            cameras[i].controller = world.controller(cameras[i]);
    });
}

} // namespace

void ListCommand::addOptions(CLI::App& app)
{
    app.add_flag("--json", m_json, "One JSON object a line for each camera");
    CLI::Option* watch = app.add_flag(
        "--watch", m_isWatch, "Go on: a line for each camera that appears, changes or goes, until Ctrl-C");
    app.add_option("--interval", m_interval, "Seconds between two looks of --watch (default 1)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 3600.0))
        ->needs(watch);
    m_search.addWait(app);
    m_selection.addExpect(app);
    m_line.addOptions(app, app);
    app.get_option("--line")->excludes(watch);
    app.get_option("--wait")->excludes(watch);
    app.get_option("--expect")->excludes(watch);
}

int ListCommand::execute(World& world)
{
    if (m_isWatch)
        return watch(world);
    if (const int code = m_line.prepare(world.console, m_selection))
        return code;
    CameraSearch search(world, m_search, {false, true});
    const int code = search.run([&](const auto& found) { return m_selection.choose(found); });
    if (code != ExitWell && code != ExitNoSuchCamera)
        return code;
    std::vector<ListedCamera> cameras = search.cameras();
    nameControllers(world, cameras);
    for (const ListedCamera& camera : cameras)
        world.console.object("camera", listedJson(camera));
    if (!m_json && !cameras.empty())
        world.console.out(listText(cameras));
    return m_selection.isGiven() ? code : ExitWell; // nobody there is an answer, too
}

int ListCommand::watch(World& world) const
{
    const Interrupt interrupt;
    LineWatch watch;
    std::vector<ListedCamera> cameras;
    if (const int code = CameraSearch::findAll(world, cameras))
        return code;
    CameraSearch::tellProblems(world.console);
    KX_Status status = KX_OK;
    while (world.console.isOutGood() && !Interrupt::isRequested()) {
        nameControllers(world, cameras);
        if (status == KX_OK)
            for (const CameraEvent& event : watch.look(cameras))
                tell(world.console, event);
        pause();
        // A network that is away for a while is told once and outlived.
        const KX_Status before = status;
        std::vector<KX_DeviceEntry> entries;
        status = world.enumerate(entries);
        cameras = camerasFrom(entries);
        if (status != KX_OK && before == KX_OK)
            tellSearchFailure(world.console, status);
    }
    return ExitWell; // to be ended is what it is there for
}

void ListCommand::tell(Console& console, const CameraEvent& event) const
{
    if (m_json)
        console.object("event", eventJson(event, QDateTime::currentDateTimeUtc()));
    else
        console.out(eventText(event, QDateTime::currentDateTimeUtc()));
}

void ListCommand::pause() const
{
    using Clock = std::chrono::steady_clock;
    const auto end =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(m_interval));
    while (!Interrupt::isRequested() && Clock::now() < end)
        std::this_thread::sleep_for(std::min<Clock::duration>(kShortPause, end - Clock::now()));
}

} // namespace companion
