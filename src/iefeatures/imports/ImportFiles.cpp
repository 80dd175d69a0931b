#include "iefeatures/imports/ImportFiles.h"

#include "iefeatures/files/FeatureBagInput.h"

namespace companion
{
namespace
{

FeaturesFileInput inputOf(const QString& bag, const QString& features)
{
    const FeaturesFileInput input = bag.isEmpty() ? FeaturesFileInput() : lookAtFeatureBag(bag);
    return input.isGood() && !features.isEmpty() ? readFeaturesFile(features) : input;
}

} // namespace

SharedImportFiles readImportFiles(const QString& bag, const QString& features, const QString& original)
{
    auto files =
        std::make_shared<ImportFiles>(ImportFiles{bag, features, original, inputOf(bag, features), {}});
    files->named = namedByBag(bag);
    files->named.add(namedBy(files->input.content));
    return files;
}

std::vector<ImportJob> importJobs(const std::vector<ListedCamera>& cameras, const SharedImportFiles& files)
{
    std::vector<ImportJob> jobs;
    for (const ListedCamera& camera : cameras)
        jobs.push_back({camera, files});
    return jobs;
}

} // namespace companion
