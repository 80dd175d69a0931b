#include "iefeatures/files/FeaturesFileInput.h"

#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"

#include "jobs/file/RegularFile.h"

#include <QFile>

namespace companion
{

QString unreadableText(const QString& path)
{
    QFile file(path);
    const QString cause = ie::openRegular(file, QIODevice::ReadOnly);
    return "The file cannot be read: " + printable(path) + (cause.isEmpty() ? QString() : " (" + cause + ')');
}

FeaturesFileInput readFeaturesFile(const QString& path)
{
    const QString name = printable(path);
    const ie::LoadedFile file = ie::loadFeaturesFile(path);
    switch (file.failure) {
    case ie::LoadedFile::Failure::NotOpened:
        return {{}, CameraVerdict::UnreadableFile, unreadableText(path)};
    case ie::LoadedFile::Failure::TooLarge:
        return {{},
                CameraVerdict::UnreadableFile,
                QString("The file is too large (%1 MiB at most): ").arg(ie::kMaximumFileSize >> 20) + name};
    case ie::LoadedFile::Failure::Empty:
    case ie::LoadedFile::Failure::NotLoaded:
        return {{}, CameraVerdict::BadFile, "The file is no features file: " + name};
    case ie::LoadedFile::Failure::None:
        break;
    }
    const ie::FeaturesContent content = ie::readFeatures(file.document.documentElement());
    if (!content.hasFeatures)
        return {content, CameraVerdict::BadFile, "The file has no features: " + name};
    return {content, CameraVerdict::Ready, {}};
}

void tellError(Console& console, const FeaturesFileInput& input, bool isJson)
{
    console.err(input.error + '\n');
    if (isJson)
        console.object("refusal",
                       {{"result", json(verdictWord(input.verdict))}, {"error", json(input.error)}});
}

} // namespace companion
