// What should be on the line: an inventory of cameras, one TOML file that people write and read as well.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

#include <map>
#include <optional>
#include <variant>
#include <vector>

namespace companion
{

// Some bytes of the file's text.
struct TextSpan
{
    int begin = 0;
    int end = 0; // behind the last
};

// One camera that should be there. Empty texts and nothing in the switches: the inventory does not say.
struct InventoryCamera
{
    QString name; // of its table
    QString model;
    QString serial;
    std::optional<QString> userName; // what the camera calls itself where that is not its name here
    QString mac;                     // "02:00:00:00:00:01", upper case; GigE Vision
    QString guid;                    // USB3 Vision
    QString interfaceName;           // its place: "eth1", "USB 2-1.4", a serial port's path
    QString address;                 // dotted quads
    QString mask;
    QString gateway;
    std::optional<bool> usesDhcp;
    std::optional<bool> usesLla;
    QString firmware;
    QString featuresFile; // paths as they stand there
    QString featuresHash; // SHA-256, lower case
    QString bagFile;
    QString bagHash;
    QString userSet;     // that its state is kept in
    QStringList ignored; // features, "*" for any characters, whose difference does not count
    QStringList retired; // MAC addresses of cameras that were in this one's place, upper case
    QString comment;

    QString nameInCamera() const;
    // Its features can be set, and never be compared.
    bool hasBagAlone() const { return featuresFile.isEmpty() && !bagFile.isEmpty(); }

    QMap<QString, QString> remarks = {};     // comments for `ignored` of a new camera, by feature; never read
    std::map<QString, TextSpan> places = {}; // of the values that are given, by their keys
};

struct Inventory
{
    QString path;                         // absolute
    QByteArray text;                      // as it was read
    QString name;                         // of the line
    QString folder;                       // that files of cameras go into, as it stands there
    QMap<QString, QStringList> ignored;   // by model, beside each camera's own
    std::vector<InventoryCamera> cameras; // in the file's order

    // The folder, or the usual one for an inventory of its name; as it would stand there.
    QString filesFolder() const;
    // A path of the inventory from here: they are relative to its file.
    QString resolved(const QString& relative) const;
    const InventoryCamera* find(const QString& name) const; // null: there is none
    QStringList ignoredOf(const InventoryCamera& camera) const;
};

// What is wrong with an inventory, and where: line and column count from 1, a column is a character. Line 0:
// not in its text.
struct InventoryFault
{
    int line = 0;
    int column = 0;
    QString text; // a sentence
};
// "line.toml:12:3: ...", printable
QString faultText(const QString& path, const InventoryFault& fault);

struct InventoryReading
{
    Inventory inventory; // empty where there is a fault
    std::vector<InventoryFault> faults;

    bool isGood() const { return faults.empty(); }
};

// All faults, in the text's order; what is no TOML at all has one. `path` only resolves paths.
InventoryReading parseInventory(const QByteArray& text, const QString& path);
// From the disk; what is no regular file is none.
InventoryReading readInventory(const QString& path);

using InventoryValue = std::variant<QString, bool, QStringList>;

// The keys of a camera's table, in the order in which new ones are written.
enum class InventoryKind
{
    Text,
    Name, // a text that may be empty
    Switch,
    List
};
struct InventoryKey
{
    const char* name;
    InventoryKind kind;
    std::variant<QString InventoryCamera::*, std::optional<QString> InventoryCamera::*,
                 std::optional<bool> InventoryCamera::*, QStringList InventoryCamera::*>
        member;
    // Makes the value what it is kept as; gives why it is none, what follows the key and a blank.
    QString (*objection)(QString& value);
};
const std::vector<InventoryKey>& inventoryKeys();
// Whether the texts, without their places, say the same.
bool sayTheSame(const InventoryCamera& left, const InventoryCamera& right);

// Why a camera cannot have the name in its transport: GigE Vision has 16 bytes of room, USB3 Vision 64. What
// follows the name; empty: it can.
QString inventoryNameObjection(const InventoryCamera& camera);

} // namespace companion
