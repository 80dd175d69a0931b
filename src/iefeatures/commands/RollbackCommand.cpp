#include "iefeatures/commands/RollbackCommand.h"

#include "iefeatures/check/CheckReport.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/files/FeatureBagInput.h"
#include "iefeatures/files/NamedFeatures.h"

#include "jobs/rules/DeviceNames.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>

#include <cstring>

namespace companion
{

void RollbackCommand::addOptions(CLI::App& app)
{
    app.add_option("SNAPSHOT", m_snapshot, "Folder of one snapshot, as --snapshot has made it")
        ->required()
        ->type_name("")
        ->check(
            [](const std::string& folder) { return std::string(folder.empty() ? "Name a folder." : ""); });
    m_selection.addOptions(app);
    m_search.addWait(app);
    m_search.addKeepGoing(app);
    app.add_flag("--force", m_isForced,
                 "Take the snapshot of another camera of the same model, and write all that it names");
    app.add_flag("--json", m_json, "JSON lines instead of text");
    m_options.addAudit(app);
    m_options.addDetails(app);
    m_log.addOptions(app);
}

int RollbackCommand::execute(World& world)
{
    QString problem;
    const auto snapshot = findSnapshot(QString::fromStdString(m_snapshot), problem);
    if (!snapshot) {
        world.console.err(problem + '\n');
        return ExitInputOutput;
    }
    FeaturesFileInput file;
    if (const int code = readFiles(world.console, *snapshot, file))
        return code;
    CameraSearch search(world, m_search, {true, m_selection.isOpen()});
    if (const int code = search.run([&](const auto& cameras) { return m_selection.choose(cameras); }))
        return code;
    for (const ListedCamera& camera : search.cameras())
        if (const int code = objectTo(world.console, camera, *snapshot, file.content.header))
            return code;
    return search.codeOf(runLogged(world.console, m_log, [&] {
        if (const int code = proveCameras(world.console, search.cameras(), file.content))
            return code;
        return ImportProcedure(world.console, task())
            .run(importJobs(search.cameras(), filesOf(world.console, *snapshot)));
    }));
}

// Both, before anything is done: what the first one has written would otherwise stay when the second is none.
int RollbackCommand::readFiles(Console& console, const Snapshot& snapshot, FeaturesFileInput& file) const
{
    if (!snapshot.featuresFile.isEmpty())
        file = readFeaturesFile(snapshot.featuresFile);
    const FeaturesFileInput bag =
        snapshot.bagFile.isEmpty() ? FeaturesFileInput() : lookAtFeatureBag(snapshot.bagFile);
    for (const FeaturesFileInput& input : {file, bag}) {
        if (input.isGood())
            continue;
        tellError(console, input, m_json);
        return exitCodeOf(input.verdict);
    }
    return ExitWell;
}

// As the import of the features file would, when the feature bag is loaded already.
int RollbackCommand::proveCameras(Console& console, const std::vector<ListedCamera>& cameras,
                                  const ie::FeaturesContent& content) const
{
    if (!content.hasFeatures)
        return ExitWell;
    ie::FeaturesContent head;
    head.header = content.header;
    head.hasFeatures = true;
    const std::vector<CameraCheck> checks =
        checkCameras(cameras, head, CheckMode::Plan, [] { return !Interrupt::isRequested(); });
    if (Interrupt::isRequested())
        return ExitInterrupted;
    const CameraVerdict verdict = gravestOf(checks);
    if (verdict == CameraVerdict::Ready)
        return ExitWell;
    console.err(checkText(checks) + "Nothing was written.\n");
    for (const CameraCheck& check : checks)
        console.object("result", checkJson(check));
    return exitCodeOf(verdict);
}

ImportTask RollbackCommand::task() const
{
    ImportTask task;
    m_options.fill(task);
    task.command = name();
    task.isVerified = true;
    task.tellsChanges = true;
    task.isForced = m_isForced;
    task.isJson = m_json;
    return task;
}

SharedImportFiles RollbackCommand::filesOf(Console& console, const Snapshot& snapshot)
{
    const QString& file = snapshot.featuresFile;
    const QString& bag = snapshot.bagFile;
    if (file.isEmpty())
        console.err(std::string("The snapshot has no features file; its feature bag alone is taken.\n"));
    else if (bag.isEmpty())
        console.err(std::string("The snapshot has no feature bag; its features file alone is taken.\n"));
    if (file.isEmpty() || bag.isEmpty() || !namedByBag(bag).names.isEmpty())
        return readImportFiles(bag, file);
    console.err(std::string("The snapshot's feature bag is empty; its features file alone is taken.\n"));
    return readImportFiles({}, file);
}

// The feature bag is loaded without a look at whom it belongs to, so that has to come before. A bag alone
// tells that by its name.
int RollbackCommand::objectTo(Console& console, const ListedCamera& camera, const Snapshot& snapshot,
                              const ie::FeaturesHeader& header) const
{
    const bool hasFile = !snapshot.featuresFile.isEmpty();
    const QString model = ie::modelNameAsUtf8(camera.device.stDeviceInfo);
    const QString file = QFileInfo(hasFile ? snapshot.featuresFile : snapshot.bagFile).fileName();
    const QString own =
        ie::featuresFileName(ie::deviceNames(camera.device.stDeviceInfo, ie::FieldEnd::AtSize));
    const bool isOwn = file == own || file == QString::fromLatin1(own.toLatin1());
    if (hasFile ? header.model != model : !isOwn && !file.startsWith(model + '_')) {
        console.err(camera.title() + ": the snapshot is of another model, " +
                    printable(hasFile ? header.model : file.section('_', 0, -2)) + ".\n");
        return ExitIncompatible;
    }
    if (m_isForced || isOwn)
        return ExitWell;
    console.err(camera.title() + ": the snapshot is of another camera, " +
                printable(file.chopped(int(std::strlen(".fpk")))) + "; --force takes it all the same.\n");
    return ExitIncompatible;
}

} // namespace companion
