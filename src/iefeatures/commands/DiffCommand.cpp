#include "iefeatures/commands/DiffCommand.h"

#include "iefeatures/cameras/LiveDescription.h"
#include "iefeatures/compare/DiffReport.h"
#include "iefeatures/compare/NamePatterns.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/running/JobRun.h"

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
        auto description = std::make_unique<LiveDescription>(sources[i].camera->device.stDeviceInfo);
        if (description->status() == KX_OK)
            descriptions[i] = std::move(description);
        else
            console.err(sources[i].camera->title() + ": its description cannot be asked: " +
                        KX_CC_StatusText(description->status()) + '\n');
    }
    return descriptions;
}

// The other side's description helps a file out.
void nameEntries(const Descriptions& descriptions, FeatureDifference& difference)
{
    std::optional<FeatureDifference::Side>* const sides[] = {&difference.a, &difference.b};
    for (const size_t i : {0, 1}) {
        const LiveDescription* description = (descriptions[i] ? descriptions[i] : descriptions[1 - i]).get();
        if (description && *sides[i] && (*sides[i])->type == "Enumeration")
            (*sides[i])->entryName = description->entryName(difference.name, (*sides[i])->value);
    }
}

} // namespace

void DiffCommand::addOptions(CLI::App& app)
{
    const auto isNamed = [](const std::string& word) {
        return std::string(word.empty() ? "Name a file or a camera." : "");
    };
    app.add_option("A", m_a, "Features file, or a camera: serial:S, name:NAME, address:ADDRESS")
        ->required()
        ->type_name("")
        ->check(isNamed);
    app.add_option("B", m_b, "The same")->required()->type_name("")->check(isNamed);
    app.add_option("--ignore", m_ignored, "Leave these features out; * stands for any characters")
        ->type_name("NAME");
    app.add_flag("--all", m_all, "Compare also what changes by itself or is read-only");
    app.add_flag("--json", m_json, "A JSON object instead of text");
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
    if ((namesCamera(m_a) || namesCamera(m_b)) && !findCameras(world, cameras))
        return ExitInputOutput;
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

int DiffCommand::compare(Console& console, std::vector<FeatureSource>& sources) const
{
    const QTemporaryDir folder;
    if (!folder.isValid()) {
        console.err("No temporary folder can be made: " + folder.errorString() + '\n');
        return ExitInputOutput;
    }
    // Files first: what is wrong with them shows without a camera being asked.
    for (const bool isCamera : {false, true}) {
        if (isCamera)
            if (const int code = exportSources(console, sources, folder.path()))
                return code;
        for (FeatureSource& source : sources)
            if (source.camera.has_value() == isCamera)
                if (const int code = readSource(console, source, m_json))
                    return code;
    }
    const FeatureComparison comparison = comparisonOf(console, sources);
    if (Interrupt::isRequested())
        return ExitInterrupted;
    if (m_json)
        console.out(diffJson(comparison, sources[0].title, sources[1].title));
    else
        console.out(diffText(comparison, sources[0].title, sources[1].title));
    // "Different" is no answer when the differences were lost: a good end is checked for that.
    return comparison.isEqual() || !console.isOutGood() ? ExitWell : ExitJobFailed;
}

FeatureComparison DiffCommand::comparisonOf(Console& console, const std::vector<FeatureSource>& sources) const
{
    const Descriptions descriptions = descriptionsOf(console, sources);
    QStringList patterns = m_all ? QStringList() : NamePatterns::changingByThemselves();
    for (const std::string& name : m_ignored)
        patterns += QString::fromStdString(name);
    const NamePatterns leftOut(patterns);
    const auto isReadOnly = [&](const QString& name) {
        return std::any_of(descriptions.begin(), descriptions.end(), [&](const auto& description) {
            return description && description->isReadOnly(name);
        });
    };
    FeatureComparison comparison =
        compareFeatures(sources[0].content, sources[1].content, [&](const QString& name, bool isHeader) {
            return leftOut.match(name) || (!m_all && !isHeader && isReadOnly(name));
        });
    for (FeatureDifference& difference : comparison.features)
        nameEntries(descriptions, difference);
    return comparison;
}

} // namespace companion
