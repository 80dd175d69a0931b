// What is imported into a camera: its files, as they were before anything was done.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/files/FeaturesFileInput.h"
#include "iefeatures/files/NamedFeatures.h"

#include <QString>

#include <memory>
#include <vector>

namespace companion
{

struct ImportFiles
{
    QString bag;             // a feature bag to load first; empty: none
    QString features;        // a features file to import; empty: none
    QString original;        // that the features file was cut from; empty: it is whole
    FeaturesFileInput input; // the features file, or a fault of either
    NamedFeatures named;     // by either
};
// Many cameras may be set by the same files.
using SharedImportFiles = std::shared_ptr<const ImportFiles>;

// Reads them. Of two files the first that is none is the fault.
SharedImportFiles readImportFiles(const QString& bag, const QString& features, const QString& original = {});

struct ImportJob
{
    ListedCamera camera;
    SharedImportFiles files;
};
// The same files for all.
std::vector<ImportJob> importJobs(const std::vector<ListedCamera>& cameras, const SharedImportFiles& files);

} // namespace companion
