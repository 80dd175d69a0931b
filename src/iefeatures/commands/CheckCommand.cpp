#include "iefeatures/commands/CheckCommand.h"

#include "iefeatures/check/CheckReport.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/files/FeaturesFileInput.h"

#include <CLI/CLI.hpp>

namespace companion
{

int runCheck(Console& console, const std::vector<ListedCamera>& cameras, const QString& file, CheckMode mode,
             bool isJson)
{
    const FeaturesFileInput input = readFeaturesFile(file);
    const bool isEmpty = input.problem.isNull() && !input.content.hasFeatures;
    if (!input.problem.isNull() || isEmpty) {
        console.err((isEmpty ? "The file has no features: " + file : input.problem) + '\n');
        return ExitInputOutput;
    }
    const std::vector<CameraCheck> checks =
        checkCameras(cameras, input.content, mode, [] { return !Interrupt::isRequested(); });
    if (Interrupt::isRequested())
        console.err(std::string("Interrupted.\n"));
    console.out(isJson ? checkJson(checks, mode) : checkText(checks, mode).toStdString());
    return Interrupt::isRequested() ? ExitInterrupted : checkExitCode(checks);
}

void CheckCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "Features file, as an export has written it")
        ->required()
        ->type_name("")
        ->check([](const std::string& file) { return std::string(file.empty() ? "Name a file." : ""); });
    m_selection.addOptions(app);
    app.add_flag("--json", m_json, "One JSON object a line for each camera");
}

int CheckCommand::execute(World& world)
{
    std::vector<ListedCamera> cameras;
    if (!findCameras(world, cameras))
        return ExitInputOutput;
    const CameraSelection::Choice choice = m_selection.choose(cameras);
    for (const QString& miss : choice.misses)
        world.console.err(miss + '\n');
    if (!choice.misses.isEmpty())
        return ExitNoSuchCamera;
    const Interrupt interrupt;
    return runCheck(world.console, choice.cameras, QString::fromStdString(m_file), mode(), m_json);
}

} // namespace companion
