#include "iefeatures/line/LineFiles.h"

#include "iefeatures/imports/AuditLog.h"

namespace companion
{

QString fileObjection(const Inventory& inventory, const QString& what, const QString& file,
                      const QString& hash)
{
    const QString path = inventory.resolved(file);
    return hash.isEmpty() || auditFile(path).sha256 == hash
               ? QString()
               : "The " + what + " is not the one that the inventory means: " + path;
}

SharedImportFiles readLineFiles(const Inventory& inventory, const InventoryCamera& camera, bool hasBag,
                                QString& problem)
{
    const auto pathOf = [&](const QString& file) {
        return file.isEmpty() ? QString() : inventory.resolved(file);
    };
    const SharedImportFiles files =
        readImportFiles(pathOf(hasBag ? camera.bagFile : QString()), pathOf(camera.featuresFile));
    problem = files->input.isGood()
                  ? fileObjection(inventory, "features file", camera.featuresFile, camera.featuresHash)
                  : files->input.error;
    if (problem.isEmpty() && hasBag)
        problem = fileObjection(inventory, "feature bag", camera.bagFile, camera.bagHash);
    return files;
}

} // namespace companion
