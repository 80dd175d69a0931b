#include "iefeatures/commands/JobCommand.h"

#include <CLI/CLI.hpp>

namespace companion
{
namespace
{

void tellAll(Console& console, const QStringList& sentences)
{
    for (const QString& sentence : sentences)
        console.err(sentence + '\n');
}

} // namespace

void JobCommand::addOptions(CLI::App& app)
{
    m_selection.addOptions(app);
    m_line.addOptions(app, *app.get_option_group(CameraSelection::kGroup));
    m_search.addWait(app);
    m_search.addKeepGoing(app);
    app.add_option("--format", m_format, formatHelp())
        ->check(CLI::IsMember({"xml", "bag"}))
        ->type_name("FORMAT");
    app.add_flag("--json", m_json,
                 "JSON lines instead of text: each signal of the jobs, then each camera's result");
    m_log.addOptions(app);
}

int JobCommand::execute(World& world)
{
    if (const QString problem = outputProblem(); !problem.isEmpty()) {
        tellAll(world.console, {problem});
        return ExitInputOutput;
    }
    if (const int code = prepare(world.console))
        return code;
    if (const int code = m_line.prepare(world.console, m_selection))
        return code;
    CameraSearch search(world, m_search, {takesControl(), m_selection.isOpen()});
    if (const int code = search.run([&](const auto& found) { return choose(m_selection, found); })) {
        tellRefusal(world.console);
        return code;
    }
    const QStringList reasons = objections(search.cameras());
    if (!reasons.isEmpty()) {
        tellAll(world.console, reasons);
        return ExitUsage;
    }
    return search.codeOf(
        runLogged(world.console, m_log, [&] { return carryOut(world.console, search.cameras()); }));
}

} // namespace companion
