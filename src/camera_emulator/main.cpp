#include "camera_emulator/Files.h"
#include "camera_emulator/NewCamera.h"
#include "camera_emulator/Options.h"
#include "camera_emulator/ProgramSignals.h"
#include "own_files/OwnFiles.h"

#include <iostream>
#include <memory>
#include <vector>

namespace
{

using Cameras = std::vector<std::unique_ptr<emu::Shell>>;

enum ExitCode
{
    Good = 0,
    Usage = 2,
    CannotBind = 6
};

std::string statistics(const Cameras& cameras)
{
    std::string text;
    for (const auto& camera : cameras)
        text += (text.empty() ? "[{\"address\":\"" : ",\n {\"address\":\"") + camera->place() +
                "\",\"counters\":" + toJson(camera->counters()) + "}";
    return text + "]\n";
}

void tellProblem(const emu::Shell& camera, const std::string& problem)
{
    std::cerr << "camera_emulator: " << camera.place() << ": " << problem << std::endl;
}

int startAll(const emu::Options& options, Cameras& cameras)
{
    for (const emu::CameraOptions& wanted : options.cameras) {
        cameras.push_back(emu::newCamera(wanted));
        if (!cameras.back()) {
            std::cerr << "camera_emulator: this system has cameras with --address only." << std::endl;
            return Usage;
        }
        emu::Shell& camera = *cameras.back();
        for (const std::string& remark : camera.seedRemarks())
            tellProblem(camera, remark);
        for (const std::string& problem : camera.seedProblems())
            tellProblem(camera, "not seeded: " + problem);
        if (!camera.seedProblems().empty())
            return Usage;
        camera.setFaults(wanted.faults);
        const emu::StartResult result = camera.start();
        if (result)
            continue;
        std::cerr << "camera_emulator: " << result.message << std::endl;
        return result.code == emu::StartCode::CannotBind ? CannotBind : Usage;
    }
    return Good;
}

void changeAll(const emu::Options& options, const Cameras& cameras)
{
    auto wanted = options.cameras.begin();
    for (const auto& camera : cameras) {
        const std::string& file = (wanted++)->changesFile;
        if (file.empty())
            continue;
        const auto changes = emu::readFile(file);
        if (!changes)
            tellProblem(*camera, file + " cannot be read.");
        else
            for (const std::string& problem : camera->change(*changes))
                tellProblem(*camera, "not changed: " + problem);
    }
    std::cout << "changed" << std::endl;
}

int run(const emu::Options& options)
{
    emu::ProgramSignals signals;
    Cameras cameras;
    if (const int code = startAll(options, cameras))
        return code;
    if (!options.readyFile.empty() && !emu::writeFile(options.readyFile, "ready\n")) {
        std::cerr << "camera_emulator: " << options.readyFile << " cannot be written." << std::endl;
        return Usage;
    }
    std::cout << "ready" << std::endl;

    while (signals.wait() == emu::Request::Change)
        changeAll(options, cameras);
    for (const auto& camera : cameras)
        camera->stop();
    if (options.statsFile.empty())
        std::cout << statistics(cameras) << std::flush;
    else if (!emu::writeFile(options.statsFile, statistics(cameras)))
        std::cerr << "camera_emulator: " << options.statsFile << " cannot be written." << std::endl;
    return Good;
}

} // namespace

int main(int argc, char** argv)
{
    own_files::keepFromOthers();
    emu::prepareOutput();
    const emu::ParsedOptions parsed = emu::parseOptions(emu::programArguments(argc, argv));
    if (parsed.options)
        return run(*parsed.options);
    if (parsed.isHelp) {
        std::cout << parsed.message;
        return Good;
    }
    std::cerr << "camera_emulator: " << parsed.message << "Try camera_emulator --help." << std::endl;
    return Usage;
}
