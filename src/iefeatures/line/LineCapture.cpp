#include "iefeatures/line/LineCapture.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/FeatureReader.h"
#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/exports/WholeExport.h"
#include "iefeatures/files/FeatureBagInput.h"
#include "iefeatures/imports/UserSet.h"
#include "iefeatures/line/InventoryEdit.h"
#include "iefeatures/line/InventoryText.h"
#include "iefeatures/line/LineCheck.h"
#include "iefeatures/network/NetworkSettings.h"

#include "camera_line/RecordTexts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <thread>

namespace companion
{
namespace
{

const char* const kUsualSet = "UserSet1"; // SFNC, "User Set Control"
constexpr std::chrono::milliseconds kTick{50};

// Without its name.
InventoryCamera entryOf(const ListedCamera& camera)
{
    InventoryCamera entry;
    entry.model = camera.model;
    entry.serial = camera.serial;
    entry.mac = camera.mac;
    entry.guid = camera.guid;
    entry.interfaceName = camera.interfaceName;
    if (camera.device.stDeviceInfo.transportType == KX_TRANSPORT_GIGE)
        entry.address = camera.address;
    return entry;
}

QString nameOf(const ListedCamera& camera, LineNaming naming, int order)
{
    switch (naming) {
    case LineNaming::Serial:
        return camera.serial;
    case LineNaming::Address:
        return camera.address;
    case LineNaming::Order:
        return QString("Camera %1").arg(order);
    case LineNaming::Name:
        break;
    }
    return camera.userName;
}

// Its files are called after its name here.
ListedCamera calledAsHere(const CapturedCamera& one)
{
    ListedCamera camera = one.camera;
    camera.userName = one.entry.name;
    return camera;
}

QString nameProblem(const CapturedCamera& one)
{
    if (one.entry.name.isEmpty())
        return "it has no name; --name-by gives it one.";
    const QString objection = inventoryNameObjection(one.entry);
    if (!objection.isEmpty())
        return "the name \"" + printable(one.entry.name) + "\" " + objection;
    return fileNameProblem(calledAsHere(one), FileNaming::Name);
}

class Capture
{
public:
    Capture(Console& console, const Inventory& inventory, const CaptureTask& task,
            std::vector<CapturedCamera>& cameras)
        : m_console(console), m_inventory(inventory), m_task(task), m_cameras(cameras)
    {}

    void run()
    {
        inParallel(m_cameras.size(), [&](size_t i) {
            CapturedCamera& one = m_cameras[i];
            one.hasNoFeaturesFile = one.problems.isEmpty() && lacksFirmwareVersion(one.camera);
        });
        exportAll("features", ExportTask::Format::FeaturesFile, &InventoryCamera::featuresFile,
                  &InventoryCamera::featuresHash);
        exportAll("bags", ExportTask::Format::FeatureBag, &InventoryCamera::bagFile,
                  &InventoryCamera::bagHash);
        pause();
        inParallel(m_cameras.size(), [&](size_t i) {
            if (m_cameras[i].problems.isEmpty())
                askAgain(m_cameras[i]);
        });
    }

private:
    void exportAll(const char* subFolder, ExportTask::Format format, QString InventoryCamera::*file,
                   QString InventoryCamera::*hash)
    {
        const QString relative = m_inventory.filesFolder() + '/' + subFolder;
        const QString folder = m_inventory.resolved(relative);
        std::vector<ListedCamera> cameras;
        std::vector<CapturedCamera*> taken;
        const QString problem = QDir().mkpath(folder) ? QString() : folder + " cannot be made.";
        for (CapturedCamera& one : m_cameras) {
            if (!problem.isEmpty() && one.problems.isEmpty())
                one.problems += problem;
            const bool isPossible = format != ExportTask::Format::FeaturesFile || !one.hasNoFeaturesFile;
            if (!one.problems.isEmpty() || !isPossible)
                continue;
            cameras.push_back(calledAsHere(one));
            taken.push_back(&one);
        }
        ExportTask task{format, [&](const StructDeviceInfo&) { return folder; }, m_task.isJson};
        task.naming = FileNaming::Name;
        if (format == ExportTask::Format::FeatureBag)
            task.objection = [&](const ListedCamera& camera) {
                return bagPathProblem(folder + '/' + fileNameOf(camera, FileNaming::Name));
            };
        const std::vector<CameraExport> done = runExports(m_console, cameras, task);
        for (size_t i = 0; i < taken.size(); ++i) {
            taken[i]->problems += problemsOf(done[i]);
            taken[i]->entry.*file = relative + '/' + fileNameOf(cameras[i], FileNaming::Name);
            taken[i]->entry.*hash = hashOfFile(done[i].result.job.path);
            if (taken[i]->problems.isEmpty() && (taken[i]->entry.*hash).isEmpty())
                taken[i]->problems += done[i].result.job.path + " cannot be read again.";
            if (taken[i]->problems.isEmpty() && taken[i]->hasNoFeaturesFile && done[i].result.features == 0)
                dropBag(taken[i]->entry);
        }
    }

    // One that sets nothing must not look as if it kept something.
    void dropBag(InventoryCamera& entry) const
    {
        QFile::remove(m_inventory.resolved(entry.bagFile));
        entry.bagFile.clear();
        entry.bagHash.clear();
    }

    QStringList problemsOf(const CameraExport& done) const
    {
        if (done.isWhole())
            return {};
        if (!m_task.mayGoOn())
            return {"interrupted."};
        QStringList problems = done.remarks;
        if (!done.result.problem.isEmpty())
            problems += done.result.problem;
        return problems.isEmpty() ? QStringList("the export failed.") : problems;
    }

    void pause() const
    {
        const auto end = std::chrono::steady_clock::now() + m_task.pause;
        while (m_task.mayGoOn() && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(kTick);
    }

    void askAgain(CapturedCamera& one) const
    {
        if (!one.hasNoFeaturesFile)
            lookForMoves(one);
        readNetwork(one);
        one.entry.userSet = userSetOf(one.camera);
    }

    void lookForMoves(CapturedCamera& one) const
    {
        const FeaturesFileInput file = readFeaturesFile(m_inventory.resolved(one.entry.featuresFile));
        if (!file.isGood()) {
            one.problems += file.error;
            return;
        }
        one.entry.firmware = file.content.header.firmware;
        const CheckRule rule(CheckMode::Verify);
        const CameraCheck check = checkCamera(one.camera, file.content, rule, m_task.mayGoOn);
        if (check.verdict > CameraVerdict::Incomplete)
            one.problems += check.error.isEmpty() ? QString("it could not be asked again.") : check.error;
        for (const EntryCheck& entry : check.entries)
            if (isAmiss(entry))
                propose(entry, one);
    }

    static void propose(const EntryCheck& entry, CapturedCamera& one)
    {
        if (one.entry.remarks.contains(entry.feature))
            return;
        one.entry.ignored += entry.feature;
        one.entry.remarks[entry.feature] =
            "moved by itself from " + entry.fileValue + " to " +
            (entry.cameraValue.isNull() ? "what cannot be read" : entry.cameraValue);
    }

    static void readNetwork(CapturedCamera& one)
    {
        const QMap<QString, QString> found = networkSettings(one.camera);
        if (found.isEmpty())
            return;
        one.entry.mask = found["mask"];
        one.entry.gateway = found["gateway"];
        one.entry.usesDhcp = found["dhcp"] == "true";
        one.entry.usesLla = found["lla"] == "true";
    }

    QString userSetOf(const ListedCamera& camera) const
    {
        if (!m_task.userSet.isEmpty())
            return m_task.userSet;
        return hasUserSet(camera, kUsualSet) ? kUsualSet : QString();
    }

    Console& m_console;
    const Inventory& m_inventory;
    const CaptureTask& m_task;
    std::vector<CapturedCamera>& m_cameras;
};

} // namespace

std::vector<CapturedCamera> nameCameras(const std::vector<ListedCamera>& cameras, LineNaming naming,
                                        const QStringList& known)
{
    std::vector<CapturedCamera> named;
    QMap<QString, int> uses;
    for (const QString& name : known)
        ++uses[name];
    for (const ListedCamera& camera : cameras) {
        CapturedCamera& one = named.emplace_back();
        one.camera = camera;
        one.entry = entryOf(camera);
        one.entry.name = nameOf(camera, naming, int(named.size()));
        if (camera_line::userNameField(camera.device.stDeviceInfo).bytes && one.entry.name != camera.userName)
            one.entry.userName = camera.userName;
        ++uses[one.entry.name];
        const QString problem = nameProblem(one);
        if (!problem.isEmpty())
            one.problems += problem;
    }
    for (CapturedCamera& one : named)
        if (one.problems.isEmpty() && uses[one.entry.name] > 1)
            one.problems += "another camera is called \"" + printable(one.entry.name) + "\" too.";
    return named;
}

void capture(Console& console, const Inventory& inventory, const CaptureTask& task,
             std::vector<CapturedCamera>& cameras)
{
    Capture(console, inventory, task, cameras).run();
}

Inventory newInventory(const QString& path, const QString& name)
{
    Inventory line;
    line.path = QFileInfo(path).absoluteFilePath();
    line.name = name.isEmpty() ? QFileInfo(path).completeBaseName() : name;
    line.folder = line.filesFolder();
    line.text =
        "# What should be on this line; \"iefeatures line check\" compares it with what is.\n\n[line]\n"
        "name = " +
        tomlText(line.name) + "\nfolder = " + tomlText(line.folder) + '\n';
    return line;
}

QByteArray withCaptured(const Inventory& inventory, const std::vector<CapturedCamera>& cameras,
                        QString& problem)
{
    std::vector<InventoryCamera> added;
    for (const CapturedCamera& one : cameras)
        added.push_back(one.entry);
    return editedText(inventory, {}, added, problem);
}

QByteArray withRefreshed(const Inventory& inventory, const CapturedCamera& camera, QString& problem)
{
    const InventoryCamera& before = *inventory.find(camera.entry.name);
    InventoryCamera now = camera.entry;
    if (camera.hasNoFeaturesFile && !before.featuresFile.isEmpty()) {
        problem = printable(before.name) +
                  ": there can be no features file of it any more; take \"features\" "
                  "and \"features_sha256\" out of the inventory.";
        return {};
    }
    if (before.nameInCamera() == now.nameInCamera())
        now.userName = before.userName;
    now.userSet = before.userSet;
    now.ignored = before.ignored;
    return editedText(inventory, changesBetween(before, now), {}, problem);
}

} // namespace companion
