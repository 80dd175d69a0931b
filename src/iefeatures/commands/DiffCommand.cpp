#include "iefeatures/commands/DiffCommand.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/cameras/LiveDescription.h"
#include "iefeatures/cameras/NamePatterns.h"
#include "iefeatures/compare/DiffReport.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/exports/ExportVerdict.h"
#include "iefeatures/files/NamedFeatures.h"
#include "iefeatures/running/JobRun.h"

#include "jobs/rules/ControlFeature.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>

namespace companion
{
namespace
{

// Of the sides that are cameras; null for a file, or where it cannot be had.
using Descriptions = std::vector<std::unique_ptr<LiveDescription>>;

Descriptions descriptionsOf(Console& console, const std::vector<FeatureSource>& sources)
{
    Descriptions descriptions(sources.size());
    for (size_t i = 0; i < sources.size(); ++i) {
        if (!sources[i].camera)
            continue;
        auto description = std::make_unique<LiveDescription>(sources[i].camera->device.stDeviceInfo,
                                                             namedBy(sources[i].content).values);
        if (description->status() == KX_OK)
            descriptions[i] = std::move(description);
        else
            console.err(sources[i].camera->title() + ": its description cannot be asked: " +
                        KX_CC_StatusText(description->status()) + '\n');
    }
    return descriptions;
}

// Null: it is one, as far as the names and the cameras tell. A state is left out without a word.
QString wordFor(const Nature& nature, bool isStrict)
{
    switch (nature.kind) {
    case Nature::Kind::State:
        return "";
    case Nature::Kind::Session:
        return isStrict ? QString() : verdictWord(EntryVerdict::Session);
    case Nature::Kind::Automatic:
        return isStrict ? QString() : verdictWord(EntryVerdict::Automatic);
    case Nature::Kind::Setting:
        break;
    }
    return {};
}

// A single camera that says so is enough.
std::optional<QString> whyNoSetting(const Descriptions& descriptions, const FeatureDifference& difference,
                                    bool isStrict)
{
    QString word = wordFor(natureOfName(difference.name), isStrict);
    bool isReadOnly = false;
    for (const auto& description : descriptions) {
        if (!description)
            continue;
        if (word.isNull())
            word = wordFor(description->nature(difference.name, difference.isRegisterBlock()), isStrict);
        isReadOnly = isReadOnly || description->isReadOnly(difference.name);
    }
    if (!word.isNull())
        return word;
    return isReadOnly ? std::optional<QString>("") : std::nullopt;
}

// Cameras are read without control, and so without a word about who has it.
void leaveControlOut(std::vector<FeatureSource>& sources)
{
    for (FeatureSource& source : sources) {
        auto& entries = source.content.entries;
        entries.erase(std::remove_if(entries.begin(), entries.end(),
                                     [](const ie::FeaturesContent::Entry& entry) {
                                         const auto& name =
                                             entry.isComplex ? entry.complex.name : entry.plain.name;
                                         return name == ie::kControlFeature;
                                     }),
                      entries.end());
    }
}

// The other side's description helps a file out.
void nameEntries(const Descriptions& descriptions, FeatureDifference& difference)
{
    std::optional<FeatureDifference::Side>* const sides[] = {&difference.a, &difference.b};
    for (const size_t i : {0, 1}) {
        LiveDescription* description = (descriptions[i] ? descriptions[i] : descriptions[1 - i]).get();
        if (description && *sides[i] && (*sides[i])->type == "Enumeration")
            (*sides[i])->entryName = description->entryName(difference.name, (*sides[i])->value);
    }
}

// Either description will do.
void placeRegisters(const Descriptions& descriptions, bool isGrouped, FeatureDifference& difference)
{
    LiveDescription* description = (descriptions[0] ? descriptions[0] : descriptions[1]).get();
    if (!description)
        return;
    if (isGrouped)
        difference.category = description->category(difference.name);
    for (RegisterDifference& word : difference.registers)
        if (!word.variables.isEmpty())
            word.selectors = description->selectors(difference.name, word.variables);
}

} // namespace

void DiffCommand::addOptions(CLI::App& app)
{
    const auto isNamed = [](const std::string& word) {
        const auto camera = cameraWord(word);
        const bool isEmpty = word.empty() || (camera && camera->value.isEmpty());
        return std::string(isEmpty ? "Name a file or a camera." : "");
    };
    app.add_option(
           "A", m_a,
           "Features file, or a camera: serial:S, name:NAME, address:ADDRESS, mac:MAC; or a folder of "
           "files, each against its camera")
        ->required()
        ->type_name("")
        ->check(isNamed);
    app.add_option("B", m_b, "Against a file or a camera: another one")->type_name("")->check(isNamed);
    app.add_option("--ignore", m_ignored, "Leave these features out; * stands for any characters")
        ->type_name("NAME")
        ->check(isGiven("Name a feature."));
    app.add_flag("--all", m_all, "Compare also what is no setting, changes by itself or is read-only");
    app.add_flag("--strict", m_isStrict, "Compare also what streaming programs and automatic functions set");
    m_report.addOptions(app);
    app.add_flag("--skip-unreadable", m_skipsUnreadable, kSkipUnreadableHelp);
    app.add_flag("--json", m_json, "JSON lines instead of text");
    m_folder.addOptions(app);
    m_selection.addFilters(app);
    m_line.addOptions(app, *app.get_option_group(CameraSelection::kGroup));
    m_search.addWait(app);
    m_search.addKeepGoing(app);
    m_log.addOptions(app);
    app.final_callback([this] {
        const bool isFolder = !cameraWord(m_a) && QFileInfo(QString::fromStdString(m_a)).isDir();
        if (isFolder && !m_b.empty())
            throw CLI::ValidationError("B", "A folder is compared with its files' cameras alone.");
        if (!isFolder && m_b.empty())
            throw CLI::RequiredError("B");
        if (!isFolder && (m_selection.isGiven() || m_line.isGiven() || m_search.isKeptGoing))
            throw CLI::ValidationError("A", "Only of a folder can cameras be chosen by options.");
    });
}

void DiffCommand::Pair::end(int exitCode, const QString& word)
{
    if (code != ExitWell)
        return;
    code = exitCode;
    result = word;
}

int DiffCommand::execute(World& world)
{
    const QString path = cameraWord(m_a) ? QString() : QString::fromStdString(m_a);
    if (const int code = m_folder.setPath(world.console, path))
        return code;
    return m_folder.isUsed() ? compareFolder(world) : compareTwo(world);
}

int DiffCommand::compareTwo(World& world) const
{
    Pairs pairs(1);
    if (const int code = findSources(world, pairs.front().sources))
        return code;
    return runLogged(world.console, m_log, [&] { return compare(world.console, pairs); });
}

int DiffCommand::compareFolder(World& world)
{
    if (const int code = m_line.prepare(world.console, m_selection))
        return code;
    CameraSearch search(world, m_search, {false, m_selection.isOpen()});
    if (const int code = search.run([&](const auto& found) { return m_folder.pair(m_selection, found); })) {
        m_folder.tellSummary(world.console, {});
        return code;
    }
    Pairs pairs;
    for (const FolderPairs::Pair& found : m_folder.pairs()) {
        std::vector<FeatureSource>& sources = pairs.emplace_back().sources;
        sources[0].path = found.path;
        sources[0].title = printable(found.path);
        sources[1].camera = found.camera;
        sources[1].title = "camera " + found.camera.title();
    }
    return search.codeOf(runLogged(world.console, m_log, [&] { return compare(world.console, pairs); }));
}

int DiffCommand::findSources(World& world, std::vector<FeatureSource>& sources) const
{
    std::vector<ListedCamera> cameras;
    if (cameraWord(m_a) || cameraWord(m_b)) {
        CameraSearch search(world, m_search, {false, false});
        const auto choose = [&](const std::vector<ListedCamera>& found) {
            cameras = found;
            return meant(found);
        };
        if (const int code = search.run(choose))
            return code;
    }
    const int codeA = findSource(world.console, m_a, cameras, sources[0]);
    const int codeB = findSource(world.console, m_b, cameras, sources[1]);
    if (codeA != ExitWell || codeB != ExitWell)
        return std::max(codeA, codeB);
    const bool areCameras = sources[0].camera && sources[1].camera;
    if (areCameras && sources[0].camera->device.nDeviceID == sources[1].camera->device.nDeviceID) {
        world.console.err("A and B are one camera: " + sources[0].camera->title() + '\n');
        return ExitUsage;
    }
    return ExitWell;
}

// Those that a side may mean; which of several is not asked here.
CameraSearch::Choice DiffCommand::meant(const std::vector<ListedCamera>& cameras) const
{
    CameraSearch::Choice choice;
    for (const std::string& side : {m_a, m_b}) {
        const std::optional<CameraWord> word = cameraWord(side);
        if (!word)
            continue;
        const size_t before = choice.cameras.size();
        std::copy_if(cameras.begin(), cameras.end(), std::back_inserter(choice.cameras),
                     [&](const ListedCamera& camera) { return word->fits(camera); });
        if (choice.cameras.size() == before)
            choice.misses += word->missing();
    }
    return choice;
}

int DiffCommand::compare(Console& console, Pairs& pairs) const
{
    if (const int code = readAll(console, pairs))
        return code;
    inParallel(pairs.size(), [&](size_t i) {
        if (pairs[i].code == ExitWell)
            pairs[i].comparison = comparisonOf(console, pairs[i].sources);
    });
    if (Interrupt::isRequested())
        return ExitInterrupted;
    int code = ExitWell;
    QStringList results;
    for (Pair& pair : pairs) {
        if (pair.code == ExitWell)
            tell(console, pair);
        code = std::max(code, pair.code);
        results += pair.result;
    }
    m_folder.tellSummary(console, results);
    // "Different" is no answer when the differences were lost: a good end is checked for that.
    return code == ExitJobFailed && !console.isOutGood() ? ExitWell : code;
}

// ExitWell also where some of them could not be read, which ends those alone.
int DiffCommand::readAll(Console& console, Pairs& pairs) const
{
    const QTemporaryDir folder;
    if (!folder.isValid()) {
        console.err("No temporary folder can be made: " + folder.errorString() + '\n');
        return ExitInputOutput;
    }
    // Files first: what is wrong with them shows without a camera being asked.
    std::vector<FeatureSource*> cameras;
    for (Pair& pair : pairs) {
        read(console, pair, false);
        for (FeatureSource& source : pair.sources)
            if (source.camera && pair.code == ExitWell)
                cameras.push_back(&source);
    }
    const Unreadable unreadable = m_skipsUnreadable ? Unreadable::LeftOut : Unreadable::Refused;
    if (const int code = exportSources(console, cameras, folder.path(), unreadable))
        return code;
    for (Pair& pair : pairs)
        read(console, pair, true);
    return ExitWell;
}

void DiffCommand::read(Console& console, Pair& pair, bool areCameras) const
{
    for (FeatureSource& source : pair.sources) {
        if (source.camera.has_value() != areCameras || pair.code != ExitWell)
            continue;
        if (source.path.isEmpty())
            pair.end(ExitInputOutput, verdictWord(CameraVerdict::Failed));
        else if (const int code = readSource(console, source, m_json))
            pair.end(code, verdictWord(areCameras                 ? CameraVerdict::Failed
                                       : code == ExitIncompatible ? CameraVerdict::BadFile
                                                                  : CameraVerdict::UnreadableFile));
    }
    if (areCameras && (pair.sources[0].camera || pair.sources[1].camera))
        leaveControlOut(pair.sources);
}

void DiffCommand::tell(Console& console, Pair& pair) const
{
    const std::vector<FeatureSource>& sources = pair.sources;
    console.object("diff", diffJson(pair.comparison, sources[0], sources[1]));
    if (!m_json)
        console.out(diffText(pair.comparison, sources[0].title, sources[1].title, m_report.style()));
    const bool isEqual = pair.comparison.isEqual();
    pair.end(isEqual ? ExitWell : ExitJobFailed, isEqual ? "equal" : "different");
}

FeatureComparison DiffCommand::comparisonOf(Console& console, const std::vector<FeatureSource>& sources) const
{
    const Descriptions descriptions = descriptionsOf(console, sources);
    QStringList patterns = m_all ? QStringList() : changingByThemselves();
    for (const std::string& name : m_ignored)
        patterns += QString::fromStdString(name);
    const NamePatterns leftOut(patterns);
    const auto why = [&](const FeatureDifference& difference, bool isHeader) -> std::optional<QString> {
        if (leftOut.match(difference.name))
            return QString();
        if (m_all || isHeader)
            return {};
        return whyNoSetting(descriptions, difference, m_isStrict);
    };
    FeatureComparison comparison = compareFeatures(sources[0].content, sources[1].content, why);
    for (FeatureDifference& difference : comparison.features) {
        nameEntries(descriptions, difference);
        placeRegisters(descriptions, m_report.style().isGrouped, difference);
    }
    return comparison;
}

} // namespace companion
