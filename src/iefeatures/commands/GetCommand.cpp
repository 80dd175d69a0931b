#include "iefeatures/commands/GetCommand.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/cameras/Controller.h"
#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/running/ReadingProgress.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace companion
{
namespace
{

QString withUnit(const LiveFeature& feature, const QString& unit)
{
    return unit.isEmpty() ? feature.value : feature.value + ' ' + unit;
}

Json featureJson(const LiveFeature& feature, const QString& unit, const QString& access)
{
    return {{"feature", json(feature.name)},
            {"value", feature.isRead() ? json(feature.value) : Json()},
            {"number", jsonUnlessNull(feature.number())},
            {"unit", jsonUnlessEmpty(unit)},
            {"access", jsonUnlessEmpty(access)},
            {"error", jsonUnlessEmpty(feature.problem)}};
}

} // namespace

bool GetCommand::Reading::isWhole() const
{
    return problem.isEmpty() && !isUnreached &&
           std::all_of(features.begin(), features.end(),
                       [](const LiveFeature& feature) { return feature.isRead(); });
}

void GetCommand::addOptions(CLI::App& app)
{
    app.add_option("FEATURE", m_features, "Names of features")
        ->required()
        ->type_name("")
        ->check(isGiven("Name a feature."));
    m_selection.addOptions(app);
    m_search.addWait(app);
    m_search.addKeepGoing(app);
    app.add_flag("--json", m_json, "One JSON object a line for each camera");
}

int GetCommand::execute(World& world)
{
    CameraSearch search(world, m_search, {false, m_selection.isOpen()});
    if (const int code = search.run([&](const auto& cameras) { return m_selection.choose(cameras); }))
        return code;
    const Interrupt interrupt;
    std::vector<Reading> readings(search.cameras().size());
    {
        ReadingProgress progress(world.console, search.cameras(), "reading");
        inParallel(readings.size(), [&](size_t i) {
            readings[i] = read(search.cameras()[i], [&] { progress.advance(i, int(m_features.size())); });
            progress.end(i);
        });
    }
    tell(world.console, readings);
    if (Interrupt::isRequested()) {
        world.console.err(std::string("Interrupted.\n"));
        return ExitInterrupted;
    }
    const bool areWhole = std::all_of(readings.begin(), readings.end(),
                                      [](const Reading& reading) { return reading.isWhole(); });
    return search.codeOf(areWhole ? ExitWell : ExitJobFailed);
}

GetCommand::Reading GetCommand::read(const ListedCamera& camera, const std::function<void()>& inHand) const
{
    Reading reading;
    reading.camera = camera;
    const CameraConnection connection(camera.device.stDeviceInfo, KX_ACCESS_MONITOR);
    if (connection.status() != KX_OK) {
        reading.problem = openingFailure(camera.device.stDeviceInfo, connection.status());
        return reading;
    }
    FeatureReader reader(connection.handle());
    const QByteArray description = descriptionText(connection.handle());
    for (const std::string& name : m_features) {
        reading.isUnreached = Interrupt::isRequested();
        if (reading.isUnreached)
            break;
        inHand();
        reading.features.push_back(readLiveFeature(reader, QString::fromStdString(name)));
        const LiveFeature& feature = reading.features.back();
        reading.units.push_back(feature.isRead() ? unitOf(description, feature.name) : QString());
        reading.access.push_back(feature.isRead() ? reader.access(feature.name).text() : QString());
    }
    return reading;
}

void GetCommand::tell(Console& console, const std::vector<Reading>& readings) const
{
    QList<QStringList> rows = {{"MODEL", "SERIAL", "FEATURE", "VALUE"}};
    for (const Reading& reading : readings) {
        const ListedCamera& camera = reading.camera;
        Json features = Json::array();
        if (!reading.problem.isEmpty())
            console.err(camera.title() + ": the camera could not be opened: " + reading.problem + '\n');
        for (size_t i = 0; i < reading.features.size(); ++i) {
            const LiveFeature& feature = reading.features[i];
            features.push_back(featureJson(feature, reading.units[i], reading.access[i]));
            if (feature.isRead())
                rows += {printable(camera.model), printable(camera.serial), printable(feature.name),
                         printable(withUnit(feature, reading.units[i]))};
            else
                console.err(camera.title() + ": " + printable(feature.name) + ": " + feature.problem + '\n');
        }
        console.object("values", {{"camera", cameraJson(camera)},
                                  {"error", jsonUnlessEmpty(reading.problem)},
                                  {"features", features}});
    }
    const Align left = Align::Left;
    if (!m_json && rows.size() > 1)
        console.out(alignedRows({left, left, left, left}, rows));
}

} // namespace companion
