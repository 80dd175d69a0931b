#include "iefeatures/commands/DiffCommand.h"

#include "iefeatures/cameras/LiveDescription.h"
#include "iefeatures/cameras/NamePatterns.h"
#include "iefeatures/compare/DiffReport.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/exports/ExportVerdict.h"
#include "iefeatures/files/NamedFeatures.h"
#include "iefeatures/running/JobRun.h"

#include "jobs/rules/ControlFeature.h"

#include <CLI/CLI.hpp>

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

} // namespace

void DiffCommand::addOptions(CLI::App& app)
{
    const auto isNamed = [](const std::string& word) {
        const auto camera = cameraWord(word);
        const bool isEmpty = word.empty() || (camera && camera->value.isEmpty());
        return std::string(isEmpty ? "Name a file or a camera." : "");
    };
    app.add_option("A", m_a, "Features file, or a camera: serial:S, name:NAME, address:ADDRESS, mac:MAC")
        ->required()
        ->type_name("")
        ->check(isNamed);
    app.add_option("B", m_b, "The same")->required()->type_name("")->check(isNamed);
    app.add_option("--ignore", m_ignored, "Leave these features out; * stands for any characters")
        ->type_name("NAME")
        ->check(isGiven("Name a feature."));
    app.add_flag("--all", m_all, "Compare also what is no setting, changes by itself or is read-only");
    app.add_flag("--strict", m_isStrict, "Compare also what streaming programs and automatic functions set");
    app.add_flag("--skip-unreadable", m_skipsUnreadable, kSkipUnreadableHelp);
    app.add_flag("--json", m_json, "JSON lines instead of text");
    m_search.addWait(app);
    m_log.addOptions(app);
}

int DiffCommand::execute(World& world)
{
    std::vector<FeatureSource> sources(2);
    if (const int code = findSources(world, sources))
        return code;
    return runLogged(world.console, m_log, [&] { return compare(world.console, sources); });
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

int DiffCommand::compare(Console& console, std::vector<FeatureSource>& sources) const
{
    const QTemporaryDir folder;
    if (!folder.isValid()) {
        console.err("No temporary folder can be made: " + folder.errorString() + '\n');
        return ExitInputOutput;
    }
    const Unreadable unreadable = m_skipsUnreadable ? Unreadable::LeftOut : Unreadable::Refused;
    // Files first: what is wrong with them shows without a camera being asked.
    for (const bool isCamera : {false, true}) {
        if (isCamera)
            if (const int code = exportSources(console, sources, folder.path(), unreadable))
                return code;
        for (FeatureSource& source : sources)
            if (source.camera.has_value() == isCamera)
                if (const int code = readSource(console, source, m_json))
                    return code;
    }
    if (std::any_of(sources.begin(), sources.end(),
                    [](const auto& source) { return source.camera.has_value(); }))
        leaveControlOut(sources);
    const FeatureComparison comparison = comparisonOf(console, sources);
    if (Interrupt::isRequested())
        return ExitInterrupted;
    console.object("diff", diffJson(comparison, sources[0], sources[1]));
    if (!m_json)
        console.out(diffText(comparison, sources[0].title, sources[1].title));
    // "Different" is no answer when the differences were lost: a good end is checked for that.
    return comparison.isEqual() || !console.isOutGood() ? ExitWell : ExitJobFailed;
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
    for (FeatureDifference& difference : comparison.features)
        nameEntries(descriptions, difference);
    return comparison;
}

} // namespace companion
