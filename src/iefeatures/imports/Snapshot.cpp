#include "iefeatures/imports/Snapshot.h"

#include "iefeatures/cameras/FileNaming.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/console/UnfinishedFolder.h"
#include "iefeatures/exports/ExportStage.h"
#include "iefeatures/exports/WholeExport.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <map>

namespace companion
{
namespace
{

constexpr int kMostOfOneSecond = 100; // cameras of one serial number

const char* const kFeatures = "features";
const char* const kBag = "bag";

// A serial number is the camera's text; it must not lead elsewhere.
QString asFolderName(QString serial)
{
    for (QChar& character : serial)
        if (character == '/' || character == '\\' || !character.isPrint())
            character = '_';
    return serial;
}

// Never one that is there: what another snapshot holds is not written over. One without a path when there is
// none.
UnfinishedFolder newFolder(const QString& folder, const QString& time, const ListedCamera& camera,
                           QString& problem)
{
    const QDir parent(folder);
    const QString name = time + '_' + asFolderName(camera.serial);
    for (int i = 1; i <= kMostOfOneSecond; ++i) {
        const QString tried = i == 1 ? name : name + '-' + QString::number(i);
        if (parent.exists(tried))
            continue;
        if (!parent.mkdir(tried))
            break;
        UnfinishedFolder made(parent.absoluteFilePath(tried));
        if (parent.mkdir(tried + '/' + kFeatures) && parent.mkdir(tried + '/' + kBag))
            return made;
        break;
    }
    problem = "The folder " + printable(parent.absoluteFilePath(name)) + " cannot be made.";
    return {};
}

// The camera library takes paths as Latin-1.
bool reachesTheBag(const QString& folder)
{
    return QString::fromLatin1(folder.toLatin1()) == folder;
}

// The name is left open: the bag's lacks what Latin-1 lacks.
// One file, or none at all: then the path is empty. False where it cannot be told which one is meant.
bool findOnlyFile(const QString& folder, QString& path)
{
    const QFileInfoList all =
        QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    if (!all.isEmpty())
        path = all.first().absoluteFilePath();
    return all.isEmpty() || (all.size() == 1 && all.first().isFile());
}

class Taker
{
public:
    Taker(Console& console, const SnapshotTask& task) : m_console(console), m_task(task) {}

    std::vector<SnapshotResult> take(const std::vector<ListedCamera>& cameras)
    {
        const QString time = QDateTime::currentDateTimeUtc().toString("yyyyMMdd'T'HHmmss'Z'");
        for (const ListedCamera& camera : cameras)
            prepare(camera, time);
        // First the one that writes nothing to the camera: the bag's sets selectors and sets them back.
        exportInto(kFeatures, ExportTask::Format::FeaturesFile);
        exportInto(kBag, ExportTask::Format::FeatureBag);
        for (SnapshotResult& result : m_results)
            conclude(result);
        return m_results;
    }

private:
    void prepare(const ListedCamera& camera, const QString& time)
    {
        SnapshotResult& result = m_results.emplace_back();
        result.camera = camera;
        QString problem = snapshotFolderProblem(m_task.folder);
        if (problem.isEmpty())
            m_folders[camera.device.nDeviceID] = newFolder(m_task.folder, time, camera, problem);
        result.folder = m_folders[camera.device.nDeviceID].path();
        refuse(result, problem);
    }

    static void refuse(SnapshotResult& result, const QString& problem)
    {
        if (problem.isEmpty())
            return;
        result.problems += problem;
        result.untold += problem;
    }

    void exportInto(const char* subFolder, ExportTask::Format format)
    {
        std::vector<ListedCamera> cameras;
        for (const SnapshotResult& result : m_results)
            if (result.problems.isEmpty())
                cameras.push_back(result.camera);
        const auto folder = [&](const StructDeviceInfo& device) {
            return resultOf(device.nDeviceID).folder + '/' + subFolder;
        };
        for (const CameraExport& done :
             runExports(m_console, cameras, {format, folder, m_task.isJson, m_task.unreadable})) {
            SnapshotResult& result = resultOf(done.result.job.camera.device.nDeviceID);
            result.untold += done.remarks;
            if (done.isWhole())
                continue;
            result.problems += done.remarks;
            if (!done.result.problem.isEmpty())
                result.problems += done.result.problem;
            if (result.problems.isEmpty())
                refuse(result, Interrupt::isRequested() ? "interrupted." : "the export failed.");
        }
    }

    SnapshotResult& resultOf(int deviceId)
    {
        return *std::find_if(m_results.begin(), m_results.end(), [deviceId](const SnapshotResult& known) {
            return known.camera.device.nDeviceID == deviceId;
        });
    }

    void conclude(SnapshotResult& result)
    {
        if (!result.problems.isEmpty())
            return;
        QString problem;
        result.snapshot = findSnapshot(result.folder, problem);
        if (result.snapshot && !result.snapshot->isWhole()) {
            result.snapshot.reset();
            problem = "one of its two files is missing.";
        }
        if (result.snapshot)
            m_folders[result.camera.device.nDeviceID].keep();
        else
            refuse(result, problem);
    }

    Console& m_console;
    const SnapshotTask m_task;
    std::vector<SnapshotResult> m_results;
    std::map<int, UnfinishedFolder> m_folders; // by device; those of complete snapshots are kept
};

} // namespace

std::optional<Snapshot> findSnapshot(const QString& folder, QString& problem)
{
    const QDir place(folder);
    Snapshot found{place.absolutePath(), {}, {}};
    const bool isClear = findOnlyFile(place.filePath(kFeatures), found.featuresFile) &&
                         findOnlyFile(place.filePath(kBag), found.bagFile);
    if (isClear && !(found.featuresFile + found.bagFile).isEmpty())
        return found;
    problem = printable(folder) + " is no snapshot: it needs one file in features/, one in bag/, or both.";
    return {};
}

std::vector<Snapshot> findSnapshots(const QString& folder, const QString& time, QString& problem)
{
    QStringList names = QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    names = names.filter(QRegularExpression("^\\d{8}T\\d{6}Z_"));
    const QString newest = names.isEmpty() ? QString() : names.last().section('_', 0, 0);
    names = names.filter(
        QRegularExpression('^' + QRegularExpression::escape(time.isEmpty() ? newest : time) + '_'));
    if (names.isEmpty())
        problem =
            printable(folder) + " has no snapshot" + (time.isEmpty() ? "." : " of " + printable(time) + '.');
    std::vector<Snapshot> snapshots;
    for (const QString& name : names)
        if (const auto found = findSnapshot(QDir(folder).filePath(name), problem))
            snapshots.push_back(*found);
    return problem.isEmpty() ? snapshots : std::vector<Snapshot>();
}

QString snapshotName(const Snapshot& snapshot)
{
    return QFileInfo(snapshot.featuresFile.isEmpty() ? snapshot.bagFile : snapshot.featuresFile).fileName();
}

// A bag's name lacks what Latin-1 lacks.
bool isOf(const Snapshot& snapshot, const ListedCamera& camera)
{
    const QString own = fileNameOf(camera, FileNaming::ModelAndSerial);
    const QString name = snapshotName(snapshot);
    return name == own || name == QString::fromLatin1(own.toLatin1());
}

QString snapshotFolderProblem(const QString& folder)
{
    if (!reachesTheBag(QDir(folder).absolutePath()))
        return "A feature bag cannot be written into " + printable(folder) +
               ": the name has characters beyond Latin-1.";
    return exportFolderProblem(folder);
}

std::vector<SnapshotResult> takeSnapshots(Console& console, const std::vector<ListedCamera>& cameras,
                                          const SnapshotTask& task)
{
    return Taker(console, task).take(cameras);
}

} // namespace companion
