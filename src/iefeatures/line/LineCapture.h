// The present cameras of a line as they should be: what an inventory says of them, and the files beside it.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/line/Inventory.h"

#include <chrono>
#include <functional>
#include <vector>

namespace companion
{

enum class LineNaming
{
    Name, // the user's
    Serial,
    Address,
    Order
};

struct CaptureTask
{
    QString userSet; // to keep their state in; empty: UserSet1 where a camera has one
    bool isJson = false;
    std::chrono::milliseconds pause{0}; // between the two looks
    std::function<bool()> mayGoOn;
};

struct CapturedCamera
{
    ListedCamera camera;
    InventoryCamera entry;
    QStringList problems;           // why it cannot be taken, sentences; empty: it is taken
    bool hasNoFeaturesFile = false; // there can be no features file of it
};

// What the cameras are called in the inventory; `known` has names that are given already. A camera without a
// name, or with one that another has or that cannot be, has a problem.
std::vector<CapturedCamera> nameCameras(const std::vector<ListedCamera>& cameras, LineNaming naming,
                                        const QStringList& known);

// Exports features file, where there can be one, and feature bag of each into folders below that of the
// inventory's, looks again after the pause, and fills the entries: features that are not as they were by then
// are proposed as ignored. Controls the cameras while it exports; all at the same time. Those with a problem
// are passed over.
void capture(Console& console, const Inventory& inventory, const CaptureTask& task,
             std::vector<CapturedCamera>& cameras);

// An inventory without cameras, for the file of that path.
Inventory newInventory(const QString& path, const QString& name);

// The inventory's text with the captured cameras' tables behind it; with one of its cameras as it was
// captured, under its name there, but for the user set and what is ignored. Empty, and a sentence in
// `problem`, where that would say something else than it should (InventoryEdit.h).
QByteArray withCaptured(const Inventory& inventory, const std::vector<CapturedCamera>& cameras,
                        QString& problem);
QByteArray withRefreshed(const Inventory& inventory, const CapturedCamera& camera, QString& problem);

} // namespace companion
