#include "iefeatures/commands/SetCommand.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/imports/WriteReport.h"

#include <CLI/CLI.hpp>

namespace companion
{

void WriteCommand::addOptions(CLI::App& app)
{
    addWords(app);
    m_selection.addOptions(app);
    m_search.addWait(app);
    m_search.addKeepGoing(app);
    m_audit.addOptions(app);
    app.add_flag("--json", m_json, "One JSON object a line for each camera");
}

int WriteCommand::execute(World& world)
{
    CameraSearch search(world, m_search, {true, m_selection.isOpen()});
    if (const int code = search.run([&](const auto& cameras) { return m_selection.choose(cameras); }))
        return code;
    const Interrupt interrupt;
    return search.codeOf(write(world.console, search.cameras()));
}

int WriteCommand::write(Console& console, const std::vector<ListedCamera>& cameras) const
{
    std::vector<FeatureWrites> results(cameras.size());
    std::vector<AuditEntry> entries;
    for (size_t i = 0; i < cameras.size(); ++i) {
        results[i].check.camera = cameras[i];
        entries.push_back(auditEntryOf(name(), results[i]));
    }
    AuditTrail trail(console, m_audit.rule());
    if (!trail.begin(entries))
        return ExitInputOutput;
    const std::vector<Assignment> wanted = assignments();
    inParallel(cameras.size(), [&](size_t i) {
        results[i] = writeFeatures(cameras[i], wanted, [] { return !Interrupt::isRequested(); });
        entries[i] = auditEntryOf(name(), results[i]);
    });
    trail.end(entries);
    return tellWrites(console, results);
}

void SetCommand::addWords(CLI::App& app)
{
    const auto isAssignment = [](const std::string& word) {
        const size_t sign = word.find('=');
        return std::string(sign == std::string::npos || sign == 0 ? "Write FEATURE=VALUE." : "");
    };
    app.add_option("ASSIGNMENT", m_words,
                   "FEATURE=VALUE, in this order; values are numbers, names of entries, true or false, texts")
        ->required()
        ->type_name("")
        ->check(isAssignment);
}

std::vector<Assignment> SetCommand::assignments() const
{
    std::vector<Assignment> all;
    for (const std::string& word : m_words) {
        const QString text = QString::fromStdString(word);
        all.push_back({text.section('=', 0, 0), text.section('=', 1), false});
    }
    return all;
}

void RunCommand::addWords(CLI::App& app)
{
    app.add_option("FEATURE", m_commands, "Names of commands, executed in this order")
        ->required()
        ->type_name("")
        ->check(isGiven("Name a command."));
}

std::vector<Assignment> RunCommand::assignments() const
{
    std::vector<Assignment> all;
    for (const std::string& command : m_commands)
        all.push_back({QString::fromStdString(command), {}, true});
    return all;
}

} // namespace companion
