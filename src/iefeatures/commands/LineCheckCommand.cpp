#include "iefeatures/commands/LineCheckCommand.h"

#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/commands/LineFile.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/console/Text.h"

#include "jobs/file/WholeFile.h"

#include <CLI/CLI.hpp>

namespace companion
{
namespace
{

QString writeReport(const std::string& file, const QByteArray& text)
{
    const QString path = QString::fromStdString(file);
    return ie::writeWholeBytes(path, text) ? QString() : printable(path) + " cannot be written.";
}

} // namespace

void LineCheckCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "The inventory")
        ->required()
        ->type_name("")
        ->check(isGiven("Name a file."));
    app.add_flag("--strict", m_isStrict, "Count also what streaming programs and automatic functions set");
    const auto addFile = [&](const char* name, std::string& file, const char* help) {
        app.add_option(name, file, help)->type_name("FILE")->check(isGiven("Name a file."));
    };
    addFile("--junit", m_junit, "Write a test report as JUnit has them, a test case a camera");
    addFile("--report", m_page, "Write a page for a browser and for paper (HTML)");
    addFile("--metrics", m_metrics,
            "Write metrics for a collector of text files (Prometheus); also of a failure");
    app.add_flag("--quiet", m_isQuiet, "Tell how many cameras are in which state, and no more");
    m_report.addDetails(app);
    m_report.addWide(app);
    app.add_flag("--json", m_json, "One JSON object a line for each camera");
}

int LineCheckCommand::execute(World& world)
{
    const Interrupt interrupt;
    Inventory inventory;
    std::optional<LineCheck> done;
    const int code = check(world, inventory, done);
    return writeFiles(world.console, inventory, done, code);
}

int LineCheckCommand::check(World& world, Inventory& inventory, std::optional<LineCheck>& done) const
{
    if (!readInventoryOrTell(world.console, m_file, inventory))
        return ExitInputOutput;
    std::vector<ListedCamera> cameras;
    if (const int code = findLine(world, inventory, cameras))
        return code;
    CameraSearch::tellProblems(world.console);
    const LineCheck found = checkLine(world.console, inventory, cameras, m_isStrict,
                                      askCameras([] { return !Interrupt::isRequested(); }));
    for (const LineCameraCheck& one : found.cameras)
        world.console.object("line", lineJson(one));
    if (!m_json)
        world.console.out(m_isQuiet ? lineCounts(found) + '\n' : lineText(found, m_report.style()));
    if (Interrupt::isRequested()) {
        world.console.err(std::string("Interrupted.\n"));
        return ExitInterrupted;
    }
    done = found;
    return exitCodeOf(found.gravest());
}

// Reports are of whole checks; metrics tell of all.
int LineCheckCommand::writeFiles(Console& console, const Inventory& inventory,
                                 const std::optional<LineCheck>& done, int code) const
{
    QStringList problems;
    if (done && !m_junit.empty())
        problems += writeReport(m_junit, lineJunit(inventory, *done));
    if (done && !m_page.empty())
        problems += writeReport(m_page, linePage(inventory, *done));
    if (!m_metrics.empty())
        problems += writeMetrics(QString::fromStdString(m_metrics),
                                 lineMetrics(inventory.name, done, QDateTime::currentDateTimeUtc()));
    problems.removeAll({});
    for (const QString& problem : problems)
        console.err(problem + '\n');
    return problems.isEmpty() || code == ExitInterrupted ? code : ExitInputOutput;
}

} // namespace companion
