#include "iefeatures/ListCommand.h"

#include "iefeatures/ExitCode.h"
#include "iefeatures/Text.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

namespace companion
{
namespace
{

std::string jsonText(const std::vector<Camera>& cameras)
{
    auto list = nlohmann::ordered_json::array();
    for (const Camera& camera : cameras)
        list.push_back({{"id", camera.device.nDeviceID},
                        {"transport", camera.transport.toStdString()},
                        {"model", camera.model.toStdString()},
                        {"serial", camera.serial.toStdString()},
                        {"userName", camera.userName.toStdString()},
                        {"address", camera.address.toStdString()},
                        {"status", camera.status.toStdString()}});
    return list.dump(2) + "\n";
}

QString tableText(const std::vector<Camera>& cameras)
{
    QList<QStringList> rows = {{"ID", "TRANSPORT", "MODEL", "SERIAL", "NAME", "ADDRESS", "STATUS"}};
    for (const Camera& camera : cameras)
        rows += {QString::number(camera.device.nDeviceID),
                 camera.transport,
                 printable(camera.model),
                 printable(camera.serial),
                 printable(camera.userName),
                 printable(camera.address),
                 camera.status};
    const Align left = Align::Left;
    return alignedRows({Align::Right, left, left, left, left, left, left}, rows);
}

} // namespace

void ListCommand::addOptions(CLI::App& app)
{
    app.add_flag("--json", m_json, "A JSON array instead of a table");
}

int ListCommand::execute(World& world)
{
    std::vector<Camera> cameras;
    if (!findCameras(world, cameras))
        return ExitInputOutput;
    if (cameras.empty())
        world.console.err(std::string("No camera was found.\n"));
    if (m_json)
        world.console.out(jsonText(cameras));
    else if (!cameras.empty())
        world.console.out(tableText(cameras));
    return ExitWell;
}

} // namespace companion
