// Changes to an inventory's text that leave every other character of it as it is: comments, order, blank
// lines and ends of lines are people's.
#pragma once

#include "iefeatures/line/Inventory.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace companion
{

struct InventoryChange
{
    QString camera; // that the inventory has
    QString key;    // of inventoryKeys()
    InventoryValue value;
};

// The text with other values, and with further cameras at its end. A key that its camera has not yet gets a
// line behind the camera's last one. The result is read again and says what it should, or it is empty, with a
// sentence in `problem`.
QByteArray editedText(const Inventory& inventory, const std::vector<InventoryChange>& changes,
                      const std::vector<InventoryCamera>& added, QString& problem);

// What the camera says now that it has not said, or otherwise; what it says no more is no change.
std::vector<InventoryChange> changesBetween(const InventoryCamera& before, const InventoryCamera& now);

// A camera's table.
QByteArray cameraTable(const InventoryCamera& camera, const QByteArray& lineEnd);

// Writes the text in the inventory's place in one step, when the file still is as it was read, or still is
// not there (`isNew`). The cause as a printable sentence, or an empty text.
QString saveInventory(const Inventory& inventory, const QByteArray& text, bool isNew = false);

} // namespace companion
