#include "iefeatures/files/FeatureBagInput.h"

#include "iefeatures/console/Text.h"

#include "jobs/file/RegularFile.h"

#include <QFile>

namespace companion
{
namespace
{

const char kIdentification[] = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}";

} // namespace

FeaturesFileInput lookAtFeatureBag(const QString& path)
{
    const QString name = printable(path);
    QFile file(path);
    if (!ie::openRegular(file, QIODevice::ReadOnly).isEmpty())
        return {{}, CameraVerdict::UnreadableFile, unreadableText(path)};
    if (file.size() > kLargestBag)
        return {{},
                CameraVerdict::UnreadableFile,
                QString("The file is too large (%1 MiB at most): ").arg(kLargestBag >> 20) + name};
    if (file.readLine(1024).trimmed() != kIdentification)
        return {{},
                CameraVerdict::BadFile,
                "The file is no feature bag, it does not begin with the identification line of one: " + name};
    return {};
}

QString bagPathProblem(const QString& path)
{
    if (QString::fromLatin1(path.toLatin1()) == path)
        return {};
    return QString("A feature bag cannot have the path %1: only Latin-1 characters are possible.")
        .arg(printable(path));
}

} // namespace companion
