#include "iefeatures/commands/CheckCommand.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/commands/ImportOptions.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/running/ReadingProgress.h"

#include <CLI/CLI.hpp>

namespace companion
{

namespace
{

CameraCheck check(const ImportJob& job, const CheckRule& rule, const std::function<void(int)>& inHand)
{
    const FeaturesFileInput& input = job.files->input;
    if (!input.isGood())
        return {job.camera, input.verdict, input.error, {}, {}};
    return checkCamera(
        job.camera, input.content, rule, [] { return !Interrupt::isRequested(); },
        [&] { inHand(int(input.content.entries.size())); });
}

void tellBadFiles(Console& console, const std::vector<ImportJob>& jobs)
{
    QStringList errors;
    for (const ImportJob& job : jobs)
        errors += job.files->input.error;
    errors.removeAll({});
    errors.removeDuplicates();
    for (const QString& error : errors)
        console.err(error + '\n');
}

std::vector<CameraCheck> checkAll(Console& console, const std::vector<ImportJob>& jobs, const CheckRule& rule)
{
    std::vector<ListedCamera> cameras;
    for (const ImportJob& job : jobs)
        cameras.push_back(job.camera);
    ReadingProgress progress(console, cameras, "checking");
    std::vector<CameraCheck> checks(jobs.size());
    inParallel(jobs.size(), [&](size_t i) {
        checks[i] = check(jobs[i], rule, [&](int all) { progress.advance(i, all); });
        progress.end(i);
    });
    return checks;
}

} // namespace

int runCheck(Console& console, const std::vector<ImportJob>& jobs, const CheckTask& task,
             const FolderOption& folder)
{
    tellBadFiles(console, jobs);
    const std::vector<CameraCheck> checks = checkAll(console, jobs, task.rule);
    if (Interrupt::isRequested())
        console.err(std::string("Interrupted.\n"));
    QStringList results;
    for (const CameraCheck& check : checks) {
        console.object("result", checkJson(check));
        results += verdictWord(check.verdict);
    }
    if (!task.isJson)
        console.out(checkText(checks, task.style));
    folder.tellSummary(console, results);
    return Interrupt::isRequested() ? ExitInterrupted : exitCodeOf(gravestOf(checks));
}

void CheckCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "Features file, as an export has written it, or a folder of one a camera")
        ->required()
        ->type_name("")
        ->check([](const std::string& file) { return std::string(file.empty() ? "Name a file." : ""); });
    m_folder.addOptions(app);
    m_selection.addOptions(app);
    m_line.addOptions(app, *app.get_option_group(CameraSelection::kGroup));
    m_search.addWait(app);
    m_search.addKeepGoing(app);
    app.add_flag("--strict", m_isStrict, "Count also what streaming programs and automatic functions set");
    m_report.addDetails(app);
    m_report.addOptions(app);
    addIgnoreOption(app, m_ignored);
    app.add_flag("--json", m_json, "One JSON object a line for each camera");
}

int CheckCommand::execute(World& world)
{
    const QString path = QString::fromStdString(m_file);
    if (const int code = m_folder.setPath(world.console, path))
        return code;
    if (const int code = m_line.prepare(world.console, m_selection))
        return code;
    CameraSearch search(world, m_search, {false, m_selection.isOpen()});
    const auto choose = [&](const std::vector<ListedCamera>& found) {
        return m_folder.isUsed() ? m_folder.pair(m_selection, found) : m_selection.choose(found);
    };
    if (const int code = search.run(choose)) {
        m_folder.tellSummary(world.console, {});
        return code;
    }
    const Interrupt interrupt;
    CheckTask task{{mode(), m_isStrict, patternsOf(m_ignored)}, m_report.style(), m_json};
    task.rule.asksCategories = task.style.isGrouped;
    return search.codeOf(runCheck(world.console, jobs(search.cameras()), task, m_folder));
}

std::vector<ImportJob> CheckCommand::jobs(const std::vector<ListedCamera>& cameras) const
{
    if (!m_folder.isUsed())
        return importJobs(cameras, readImportFiles({}, QString::fromStdString(m_file)));
    std::vector<ImportJob> jobs;
    for (const FolderPairs::Pair& pair : m_folder.pairs())
        jobs.push_back({pair.camera, readImportFiles({}, pair.path)});
    return jobs;
}

} // namespace companion
