#include "iefeatures/line/InventoryEdit.h"

#include "iefeatures/console/Text.h"
#include "iefeatures/line/InventoryText.h"

#include "jobs/file/WholeFile.h"

#include <QFileInfo>

#include <algorithm>

namespace companion
{
namespace
{

struct Replacement
{
    TextSpan span;
    QByteArray text;
};

QByteArray lineEndOf(const QByteArray& text)
{
    return text.contains("\r\n") ? "\r\n" : "\n";
}

const InventoryKey* keyOf(const QString& name)
{
    const std::vector<InventoryKey>& keys = inventoryKeys();
    const auto found =
        std::find_if(keys.begin(), keys.end(), [&](const InventoryKey& key) { return name == key.name; });
    return found == keys.end() ? nullptr : &*found;
}

void set(InventoryCamera& camera, const InventoryKey& key, const InventoryValue& value)
{
    if (const auto* text = std::get_if<QString InventoryCamera::*>(&key.member))
        camera.** text = std::get<QString>(value);
    else if (const auto* name = std::get_if<std::optional<QString> InventoryCamera::*>(&key.member))
        camera.** name = std::get<QString>(value);
    else if (const auto* list = std::get_if<QStringList InventoryCamera::*>(&key.member))
        camera.** list = std::get<QStringList>(value);
    else
        camera.*std::get<std::optional<bool> InventoryCamera::*>(key.member) = std::get<bool>(value);
}

// Nothing where the camera does not say it.
std::optional<InventoryValue> valueOf(const InventoryCamera& camera, const InventoryKey& key)
{
    if (const auto* text = std::get_if<QString InventoryCamera::*>(&key.member))
        return (camera.**text).isEmpty() ? std::nullopt : std::optional<InventoryValue>(camera.**text);
    if (const auto* list = std::get_if<QStringList InventoryCamera::*>(&key.member))
        return (camera.**list).isEmpty() ? std::nullopt : std::optional<InventoryValue>(camera.**list);
    if (const auto* name = std::get_if<std::optional<QString> InventoryCamera::*>(&key.member))
        return camera.**name ? std::optional<InventoryValue>(*(camera.**name)) : std::nullopt;
    const auto isOn = camera.*std::get<std::optional<bool> InventoryCamera::*>(key.member);
    return isOn ? std::optional<InventoryValue>(*isOn) : std::nullopt;
}

// Behind the line of the last value.
Replacement newLine(const InventoryCamera& camera, const InventoryChange& change, const QByteArray& text)
{
    int last = 0;
    for (const auto& [key, span] : camera.places)
        last = std::max(last, span.end);
    const QByteArray line = change.key.toUtf8() + " = " + tomlValue(change.value);
    const int end = text.indexOf('\n', last);
    if (end < 0)
        return {{text.size(), text.size()}, lineEndOf(text) + line};
    const QByteArray lineEnd = end > 0 && text[end - 1] == '\r' ? "\r\n" : "\n";
    return {{end + 1, end + 1}, line + lineEnd};
}

QByteArray replaced(QByteArray text, std::vector<Replacement> replacements)
{
    std::stable_sort(replacements.begin(), replacements.end(),
                     [](const auto& left, const auto& right) { return left.span.begin < right.span.begin; });
    for (auto it = replacements.rbegin(); it != replacements.rend(); ++it)
        text.replace(it->span.begin, it->span.end - it->span.begin, it->text);
    return text;
}

// A feature a line where there is something to say of them.
QByteArray ignoredList(const InventoryCamera& camera, const QByteArray& lineEnd)
{
    QByteArray text = "[" + lineEnd;
    for (const QString& feature : camera.ignored)
        text +=
            "    " + tomlText(feature) + ", # " + printable(camera.remarks.value(feature)).toUtf8() + lineEnd;
    return text + ']';
}

QByteArray newValue(const InventoryCamera& camera, const InventoryKey& key, const QByteArray& lineEnd)
{
    const bool hasRemarks = !camera.remarks.isEmpty() && QByteArray(key.name) == "ignored";
    return hasRemarks ? ignoredList(camera, lineEnd) : tomlValue(*valueOf(camera, key));
}

QByteArray withCameras(QByteArray text, const std::vector<InventoryCamera>& added)
{
    const QByteArray lineEnd = lineEndOf(text);
    for (const InventoryCamera& camera : added) {
        if (!text.isEmpty() && !text.endsWith('\n'))
            text += lineEnd;
        text += lineEnd + cameraTable(camera, lineEnd);
    }
    return text;
}

bool sayTheSame(const Inventory& left, const Inventory& right)
{
    return left.name == right.name && left.folder == right.folder && left.ignored == right.ignored &&
           std::equal(left.cameras.begin(), left.cameras.end(), right.cameras.begin(), right.cameras.end(),
                      [](const auto& one, const auto& other) { return sayTheSame(one, other); });
}

} // namespace

QByteArray editedText(const Inventory& inventory, const std::vector<InventoryChange>& changes,
                      const std::vector<InventoryCamera>& added, QString& problem)
{
    Inventory wanted = inventory;
    std::vector<Replacement> replacements;
    for (const InventoryChange& change : changes) {
        const auto camera =
            std::find_if(wanted.cameras.begin(), wanted.cameras.end(),
                         [&](const InventoryCamera& one) { return one.name == change.camera; });
        set(*camera, *keyOf(change.key), change.value);
        const auto place = camera->places.find(change.key);
        if (place == camera->places.end())
            replacements.push_back(newLine(*camera, change, inventory.text));
        else
            replacements.push_back({place->second, tomlValue(change.value)});
    }
    wanted.cameras.insert(wanted.cameras.end(), added.begin(), added.end());
    const QByteArray text = withCameras(replaced(inventory.text, replacements), added);
    const InventoryReading reading = parseInventory(text, inventory.path);
    if (reading.isGood() && sayTheSame(reading.inventory, wanted))
        return text;
    problem = reading.isGood()
                  ? printable(inventory.path) + " is written in a way that only people can change."
                  : faultText("what it would become", reading.faults.front());
    return {};
}

std::vector<InventoryChange> changesBetween(const InventoryCamera& before, const InventoryCamera& now)
{
    std::vector<InventoryChange> changes;
    for (const InventoryKey& key : inventoryKeys())
        if (const auto value = valueOf(now, key); value && valueOf(before, key) != value)
            changes.push_back({before.name, key.name, *value});
    return changes;
}

QByteArray cameraTable(const InventoryCamera& camera, const QByteArray& lineEnd)
{
    QByteArray text = tomlHead(camera.name) + lineEnd;
    for (const InventoryKey& key : inventoryKeys())
        if (valueOf(camera, key))
            text += key.name + QByteArray(" = ") + newValue(camera, key, lineEnd) + lineEnd;
    return text;
}

QString saveInventory(const Inventory& inventory, const QByteArray& text, bool isNew)
{
    const QString name = printable(inventory.path);
    const QFileInfo file(inventory.path);
    const bool isThere = file.exists() || file.isSymLink();
    if (isNew && isThere)
        return name + " is there by now; nothing was written into it.";
    if (!isNew && readInventory(inventory.path).inventory.text != inventory.text)
        return name + " was changed by somebody else meanwhile; nothing was written into it.";
    return ie::writeWholeBytes(inventory.path, text) ? QString() : name + " cannot be written.";
}

} // namespace companion
