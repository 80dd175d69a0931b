#include "iefeatures/commands/CheckCommand.h"

#include "iefeatures/commands/ImportOptions.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/files/FeaturesFileInput.h"

#include <CLI/CLI.hpp>

namespace companion
{

int runCheck(Console& console, const std::vector<ListedCamera>& cameras, const QString& file,
             const CheckTask& task)
{
    const FeaturesFileInput input = readFeaturesFile(file);
    std::vector<CameraCheck> checks;
    if (input.isGood()) {
        checks = checkCameras(cameras, input.content, task.rule, [] { return !Interrupt::isRequested(); });
    } else {
        console.err(input.error + '\n');
        for (const ListedCamera& camera : cameras)
            checks.push_back({camera, input.verdict, input.error, {}, {}});
    }
    if (Interrupt::isRequested())
        console.err(std::string("Interrupted.\n"));
    for (const CameraCheck& check : checks)
        console.object("result", checkJson(check));
    if (!task.isJson)
        console.out(checkText(checks, task.detail));
    return Interrupt::isRequested() ? ExitInterrupted : exitCodeOf(gravestOf(checks));
}

void CheckCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "Features file, as an export has written it")
        ->required()
        ->type_name("")
        ->check([](const std::string& file) { return std::string(file.empty() ? "Name a file." : ""); });
    m_selection.addOptions(app);
    m_search.addWait(app);
    m_search.addKeepGoing(app);
    app.add_flag("--strict", m_isStrict, "Count also what streaming programs and automatic functions set");
    app.add_flag("--details", m_isDetailed, kDetailsHelp);
    app.add_flag("--json", m_json, "One JSON object a line for each camera");
}

int CheckCommand::execute(World& world)
{
    CameraSearch search(world, m_search, {false, m_selection.isOpen()});
    if (const int code = search.run([&](const auto& cameras) { return m_selection.choose(cameras); }))
        return code;
    const Interrupt interrupt;
    const CheckTask task{{mode(), m_isStrict}, m_isDetailed ? Detail::All : Detail::Attention, m_json};
    return search.codeOf(runCheck(world.console, search.cameras(), QString::fromStdString(m_file), task));
}

} // namespace companion
