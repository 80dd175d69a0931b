#include "iefeatures/exports/ExportStage.h"

#include "iefeatures/console/OperatingSystem.h"
#include "iefeatures/console/Text.h"

#include "jobs/file/RegularFile.h"
#include "jobs/rules/StreamableFilters.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace companion
{

namespace
{

QString sentence(const QString& folder, const QString& cause)
{
    return "The folder " + printable(folder) + " cannot be written to: " + cause + '.';
}

} // namespace

QString exportFolderProblem(const QString& folder)
{
    QString cause;
    const UnfinishedFolder tried = makePrivateFolder(folder, cause);
    return cause.isEmpty() ? QString() : sentence(folder, cause);
}

QString exportNameProblem(const QString& folder, const QString& fileName)
{
    const QString path = folder + '/' + fileName;
    return isReplaceable(path) ? QString()
                               : "The file " + printable(path) + " cannot be written: it is no regular file.";
}

QString exportFilterProblem()
{
    for (const ie::StreamableFilter& filter : ie::streamableFilters()) {
        QFile file(filter.path);
        const bool isThere = file.exists();
        const QString cause = isThere ? ie::openRegular(file, QIODevice::ReadOnly) : QString();
        if (!cause.isEmpty())
            return "The filter " + printable(filter.path) + " cannot be read: " + cause + '.';
        if (isThere && file.size() > ie::kLargestFilter)
            return QString("The filter is too large (%1 MiB at most): ").arg(ie::kLargestFilter >> 20) +
                   printable(filter.path);
    }
    return {};
}

QString sharedFolderWarning(const QString& folder)
{
    if (!mayOthersWrite(folder))
        return {};
    return "Others may write into the folder " + printable(folder) +
           " and put other files in the place of those that are written there.";
}

ExportStage::ExportStage(const std::vector<ListedCamera>& cameras, const FolderOf& target)
{
    for (const ListedCamera& camera : cameras)
        m_places[camera.device.nDeviceID] = placeFor(camera, target(camera.device));
}

ExportStage::Room& ExportStage::roomIn(const QString& target)
{
    const auto known = m_rooms.find(target);
    if (known != m_rooms.end())
        return known->second;
    Room& room = m_rooms[target];
    room.folder = makePrivateFolder(target, room.cause);
    return room;
}

ExportStage::Place ExportStage::placeFor(const ListedCamera& camera, const QString& target)
{
    const Room& room = roomIn(target);
    if (const QString problem = exportFilterProblem(); !problem.isEmpty())
        return {{}, target, problem};
    const QString folder = room.folder.path() + '/' + QString::number(camera.device.nDeviceID);
    if (room.cause.isEmpty() && QDir().mkdir(folder))
        return {folder, target, {}};
    return {{}, target, sentence(target, room.cause)};
}

QString ExportStage::folder(int deviceId) const
{
    return m_places.at(deviceId).folder;
}

QString ExportStage::problem(int deviceId) const
{
    return m_places.at(deviceId).problem;
}

QString ExportStage::file(int deviceId) const
{
    const QFileInfoList files = QDir(folder(deviceId)).entryInfoList(QDir::Files | QDir::Hidden);
    return files.size() == 1 ? files.first().filePath() : QString();
}

QString ExportStage::target(int deviceId, const QString& fileName) const
{
    return m_places.at(deviceId).target + '/' + fileName;
}

QString ExportStage::release(int deviceId, const QString& fileName)
{
    const QString to = target(deviceId, fileName);
    const QString cause = putInPlace(file(deviceId), to);
    return cause.isEmpty() ? QString() : "The file " + printable(to) + " cannot be written: " + cause + '.';
}

} // namespace companion
