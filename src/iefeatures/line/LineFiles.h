// The files beside an inventory that a camera's state is in.
#pragma once

#include "iefeatures/imports/ImportFiles.h"
#include "iefeatures/line/Inventory.h"

namespace companion
{

// Why a file of the inventory is not the one that it means, a sentence; empty: it is, or no hash is said.
// `what`: "features file".
QString fileObjection(const Inventory& inventory, const QString& what, const QString& file,
                      const QString& hash);

// A camera's features file; with `hasBag` the bag before it, where there is one. Where they cannot be used,
// or are not the ones that are meant, a sentence in `problem`.
SharedImportFiles readLineFiles(const Inventory& inventory, const InventoryCamera& camera, bool hasBag,
                                QString& problem);

} // namespace companion
