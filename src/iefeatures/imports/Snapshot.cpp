#include "iefeatures/imports/Snapshot.h"

#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/exports/WholeExport.h"

#include <QDateTime>
#include <QDir>

#include <algorithm>

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

// Never one that is there: what another snapshot holds is not written over.
QString newFolder(const QString& folder, const QString& time, const ListedCamera& camera, QString& problem)
{
    const QDir parent(folder);
    const QString name = time + '_' + asFolderName(camera.serial);
    for (int i = 1; i <= kMostOfOneSecond; ++i) {
        const QString tried = i == 1 ? name : name + '-' + QString::number(i);
        if (parent.exists(tried))
            continue;
        if (parent.mkdir(tried) && parent.mkdir(tried + '/' + kFeatures) && parent.mkdir(tried + '/' + kBag))
            return parent.absoluteFilePath(tried);
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
QString onlyFileIn(const QString& folder)
{
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files);
    return files.size() == 1 && files.first().size() > 0 ? files.first().absoluteFilePath() : QString();
}

class Taker
{
public:
    Taker(Console& console, const QString& folder, bool isJson)
        : m_console(console), m_folder(folder), m_isJson(isJson)
    {}

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
        QString problem;
        if (!reachesTheBag(QDir(m_folder).absolutePath()))
            problem = "A feature bag cannot be written into " + printable(m_folder) +
                      ": the name has characters beyond Latin-1.";
        else
            result.folder = newFolder(m_folder, time, camera, problem);
        if (!problem.isEmpty())
            result.problems += problem;
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
        for (const CameraExport& done : runExports(m_console, cameras, {format, folder, m_isJson})) {
            SnapshotResult& result = resultOf(done.result.job.camera.device.nDeviceID);
            if (done.isWhole()) {
                result.remarks += done.remarks;
                continue;
            }
            result.problems += done.remarks;
            if (result.problems.isEmpty())
                result.problems += Interrupt::isRequested() ? "interrupted." : "the export failed.";
        }
    }

    SnapshotResult& resultOf(int deviceId)
    {
        return *std::find_if(m_results.begin(), m_results.end(), [deviceId](const SnapshotResult& known) {
            return known.camera.device.nDeviceID == deviceId;
        });
    }

    static void conclude(SnapshotResult& result)
    {
        if (!result.problems.isEmpty())
            return;
        QString problem;
        result.snapshot = findSnapshot(result.folder, problem);
        if (!result.snapshot)
            result.problems += problem;
    }

    Console& m_console;
    const QString m_folder;
    const bool m_isJson;
    std::vector<SnapshotResult> m_results;
};

} // namespace

std::optional<Snapshot> findSnapshot(const QString& folder, QString& problem)
{
    const QDir place(folder);
    const QString features = onlyFileIn(place.filePath(kFeatures));
    const QString bag = onlyFileIn(place.filePath(kBag));
    if (!features.isEmpty() && !bag.isEmpty())
        return Snapshot{place.absolutePath(), features, bag};
    problem = printable(folder) + " is no snapshot: it needs one file in features/ and one in bag/.";
    return {};
}

std::vector<SnapshotResult> takeSnapshots(Console& console, const std::vector<ListedCamera>& cameras,
                                          const QString& folder, bool isJson)
{
    return Taker(console, folder, isJson).take(cameras);
}

} // namespace companion
