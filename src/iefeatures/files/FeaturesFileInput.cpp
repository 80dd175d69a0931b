#include "iefeatures/files/FeaturesFileInput.h"

namespace companion
{

FeaturesFileInput readFeaturesFile(const QString& path)
{
    const ie::LoadedFile file = ie::loadFeaturesFile(path);
    switch (file.failure) {
    case ie::LoadedFile::Failure::None:
        return {ie::readFeatures(file.document.documentElement()), {}};
    case ie::LoadedFile::Failure::NotOpened:
        return {{}, "The file cannot be read: " + path};
    default:
        return {{}, "The file is no features file: " + path};
    }
}

} // namespace companion
