#include "iefeatures/commands/RollbackCommand.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Text.h"
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
    const FeaturesFileInput file = readFeaturesFile(snapshot->featuresFile);
    if (!file.isGood()) {
        tellError(world.console, file, m_json);
        return exitCodeOf(file.verdict);
    }
    CameraSearch search(world, m_search, {true, m_selection.isOpen()});
    if (const int code = search.run([&](const auto& cameras) { return m_selection.choose(cameras); }))
        return code;
    for (const ListedCamera& camera : search.cameras())
        if (const int code = objectTo(world.console, camera, *snapshot, file.content.header))
            return code;

    ImportTask task;
    task.command = name();
    if (namedByBag(snapshot->bagFile).names.isEmpty())
        world.console.err(
            std::string("The snapshot's feature bag is empty; its features file alone is taken.\n"));
    else
        task.bag = snapshot->bagFile;
    task.features = snapshot->featuresFile;
    task.isForced = m_isForced;
    task.isJson = m_json;
    m_options.fill(task);
    task.isVerified = true;
    return search.codeOf(runLogged(
        world.console, m_log, [&] { return ImportProcedure(world.console, task).run(search.cameras()); }));
}

// The feature bag is loaded without a look at whom it belongs to, so that has to come before.
int RollbackCommand::objectTo(Console& console, const ListedCamera& camera, const Snapshot& snapshot,
                              const ie::FeaturesHeader& header) const
{
    if (header.model != ie::modelNameAsUtf8(camera.device.stDeviceInfo)) {
        console.err(camera.title() + ": the snapshot is of another model, " + printable(header.model) +
                    ".\n");
        return ExitIncompatible;
    }
    const auto names = ie::deviceNames(camera.device.stDeviceInfo, ie::FieldEnd::AtSize);
    const QString file = QFileInfo(snapshot.featuresFile).fileName();
    if (m_isForced || file == ie::featuresFileName(names))
        return ExitWell;
    console.err(camera.title() + ": the snapshot is of another camera, " +
                printable(file.chopped(int(std::strlen(".fpk")))) + "; --force takes it all the same.\n");
    return ExitIncompatible;
}

} // namespace companion
