#include "iefeatures/commands/JobCommand.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Text.h"

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
    CameraSearch search(world, m_search, {takesControl(), m_selection.isOpen()});
    if (const int code = search.run([&](const auto& cameras) { return m_selection.choose(cameras); }))
        return code;
    const QStringList reasons = objections(search.cameras());
    if (!reasons.isEmpty()) {
        tellAll(world.console, reasons);
        return ExitUsage;
    }
    return search.codeOf(
        runLogged(world.console, m_log, [&] { return carryOut(world.console, search.cameras()); }));
}

QStringList JobCommand::objectionsToBagPath(const QString& path)
{
    if (QString::fromLatin1(path.toLatin1()) == path)
        return {};
    return {QString("A feature bag cannot have the path %1: only Latin-1 characters are possible.")
                .arg(printable(path))};
}

} // namespace companion
