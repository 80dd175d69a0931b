#include "iefeatures/commands/ListCommand.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/cameras/SearchPlaces.h"
#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"

#include <CLI/CLI.hpp>

#include <QDateTime>

#include <algorithm>
#include <chrono>
#include <thread>

namespace companion
{
namespace
{

// A Ctrl-C is noticed within this.
constexpr std::chrono::milliseconds kShortPause{50};

Json fieldsOf(const ListedCamera& camera)
{
    return {{"camera", cameraJson(camera)},
            {"status", json(camera.status)},
            {"reason", jsonUnlessEmpty(camera.reason)},
            {"mac", jsonUnlessEmpty(camera.mac)},
            {"controller", jsonUnlessEmpty(camera.controller)}};
}

QString statusText(const ListedCamera& camera)
{
    if (!camera.reason.isEmpty())
        return camera.status + ": " + printable(camera.reason);
    return camera.controller.isEmpty() ? camera.status : camera.status + " by " + camera.controller;
}

// Of those that are in use.
void nameControllers(const World& world, std::vector<ListedCamera>& cameras)
{
    inParallel(cameras.size(), [&](size_t i) {
        if (cameras[i].device.nStatus == KX_AVAILABILITY_IN_USE)
            cameras[i].controller = world.controller(cameras[i]);
    });
}

QString tableText(const std::vector<ListedCamera>& cameras)
{
    QList<QStringList> rows = {{"ID", "TRANSPORT", "MODEL", "SERIAL", "NAME", "ADDRESS", "STATUS"}};
    for (const ListedCamera& camera : cameras)
        rows += {QString::number(camera.device.nDeviceID),
                 printable(camera.transport),
                 printable(camera.model),
                 printable(camera.serial),
                 printable(camera.userName),
                 printable(camera.address),
                 statusText(camera)};
    const Align left = Align::Left;
    return alignedRows({Align::Right, left, left, left, left, left, left}, rows);
}

const char* kindWord(CameraEvent::Kind kind)
{
    switch (kind) {
    case CameraEvent::Kind::Appeared:
        return "appeared";
    case CameraEvent::Kind::Changed:
        return "changed";
    case CameraEvent::Kind::Gone:
        break;
    }
    return "gone";
}

QString now()
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
}

Json eventJson(const CameraEvent& event)
{
    Json fields = {{"time", json(now())}, {"event", kindWord(event.kind)}};
    fields.update(fieldsOf(event.camera));
    if (event.kind == CameraEvent::Kind::Changed)
        fields["was"] = Json::object();
    for (const CameraEvent::Change& change : event.changes)
        fields["was"][change.field.toStdString()] = json(change.from);
    return fields;
}

// "2026-01-02T03:04:05Z  changed   GigE  EMU-1 S1  127.0.0.11  free  (status was in use)"
QString eventText(const CameraEvent& event)
{
    const ListedCamera& camera = event.camera;
    QStringList cells = {now(), fitted(kindWord(event.kind), 8), printable(camera.transport), camera.title()};
    if (!camera.userName.isEmpty())
        cells += '"' + printable(camera.userName) + '"';
    if (!camera.address.isEmpty())
        cells += printable(camera.address);
    if (event.kind != CameraEvent::Kind::Gone)
        cells += statusText(camera);
    QStringList changes;
    for (const CameraEvent::Change& change : event.changes)
        changes += change.field + " was " + printable(change.from);
    if (!changes.isEmpty())
        cells += '(' + changes.join(", ") + ')';
    return cells.join("  ") + '\n';
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
        world.console.object("camera", fieldsOf(camera));
    if (!m_json && !cameras.empty())
        world.console.out(tableText(cameras));
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
        console.object("event", eventJson(event));
    else
        console.out(eventText(event));
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
