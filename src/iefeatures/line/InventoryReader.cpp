#include "iefeatures/console/Text.h"
#include "iefeatures/line/Inventory.h"
#include "iefeatures/line/InventoryText.h"

#include <toml++/toml.h>

#include <QFileInfo>

#include <algorithm>
#include <tuple>

namespace companion
{
namespace
{

QString textOf(std::string_view text)
{
    return QString::fromUtf8(text.data(), int(text.size()));
}

// What other programs keep there is theirs.
bool isForeign(const toml::key& key, const toml::node& value)
{
    return value.is_table() && key.str().substr(0, 2) == "x-";
}

// Names in messages, with what a terminal would act on taken out by faultText().
QString quoted(const QString& name)
{
    return '"' + name + '"';
}

class Reader
{
public:
    Reader(const QByteArray& text, const QString& path) : m_text(text), m_places(m_text)
    {
        m_reading.inventory.path = QFileInfo(path).absoluteFilePath();
        m_reading.inventory.text = text;
    }

    InventoryReading read()
    {
        try {
            const toml::table root = toml::parse(std::string_view(m_text.constData(), size_t(m_text.size())));
            readRoot(root);
        } catch (const toml::parse_error& problem) {
            fail(problem.source().begin, textOf(problem.description()) + '.');
        }
        return concluded();
    }

private:
    using Position = toml::source_position;

    void fail(const Position& at, const QString& text)
    {
        m_reading.faults.push_back({int(at.line), int(at.column), text});
    }
    void failUnknown(const toml::key& key)
    {
        fail(key.source().begin, "no such key here: " + textOf(key.str()) + '.');
    }

    InventoryReading concluded()
    {
        if (m_reading.isGood())
            return m_reading;
        std::vector<InventoryFault> faults = m_reading.faults;
        std::stable_sort(faults.begin(), faults.end(), [](const auto& left, const auto& right) {
            return std::tie(left.line, left.column) < std::tie(right.line, right.column);
        });
        return {{}, faults};
    }

    void readRoot(const toml::table& root)
    {
        for (const auto& [key, value] : root) {
            if (key.str() == "line")
                readTable(key, value, [&](const toml::table& table) { readLine(table); });
            else if (key.str() == "camera")
                readTable(key, value, [&](const toml::table& table) { readCameras(table); });
            else if (!isForeign(key, value))
                failUnknown(key);
        }
        if (!root.contains("line"))
            fail({1, 1}, "a table [line] is missing.");
        findDoubles();
    }

    template <typename Read>
    void readTable(const toml::key& key, const toml::node& value, const Read& read)
    {
        if (const toml::table* table = value.as_table())
            read(*table);
        else
            fail(value.source().begin, textOf(key.str()) + " has to be a table.");
    }

    void readLine(const toml::table& table)
    {
        Inventory& line = m_reading.inventory;
        for (const auto& [key, value] : table) {
            if (key.str() == "name")
                line.name = text(key, value);
            else if (key.str() == "folder")
                line.folder = text(key, value);
            else if (key.str() == "ignored")
                readTable(key, value, [&](const toml::table& models) { readModels(models); });
            else if (!isForeign(key, value))
                failUnknown(key);
        }
        if (!table.contains("name"))
            fail(table.source().begin, "the line has no name.");
    }

    void readModels(const toml::table& models)
    {
        for (const auto& [model, list] : models)
            m_reading.inventory.ignored[textOf(model.str())] = texts(model, list, nullptr);
    }

    void readCameras(const toml::table& cameras)
    {
        std::vector<std::pair<const toml::key*, const toml::table*>> found;
        for (const auto& [name, value] : cameras)
            readTable(name, value,
                      [&, key = &name](const toml::table& table) { found.emplace_back(key, &table); });
        std::sort(found.begin(), found.end(), [](const auto& left, const auto& right) {
            return left.first->source().begin < right.first->source().begin;
        });
        for (const auto& [name, table] : found)
            readCamera(*name, *table);
    }

    void readCamera(const toml::key& name, const toml::table& table)
    {
        InventoryCamera& camera = m_reading.inventory.cameras.emplace_back();
        m_names.push_back(name.source().begin);
        camera.name = textOf(name.str());
        for (const auto& [key, value] : table) {
            const auto known =
                std::find_if(inventoryKeys().begin(), inventoryKeys().end(),
                             [&, key = &key](const InventoryKey& one) { return key->str() == one.name; });
            if (known != inventoryKeys().end())
                readValue(*known, key, value, camera);
            else if (!isForeign(key, value))
                failUnknown(key);
        }
        objectTo(camera, name.source().begin);
    }

    void readValue(const InventoryKey& known, const toml::key& key, const toml::node& value,
                   InventoryCamera& camera)
    {
        const toml::source_region& region = value.source();
        camera.places[known.name] = {m_places.offset(region.begin.line, region.begin.column),
                                     m_places.offset(region.end.line, region.end.column)};
        if (const auto* member = std::get_if<QString InventoryCamera::*>(&known.member))
            camera.** member = checked(known, key, value);
        else if (const auto* name = std::get_if<std::optional<QString> InventoryCamera::*>(&known.member))
            camera.** name = checked(known, key, value);
        else if (const auto* list = std::get_if<QStringList InventoryCamera::*>(&known.member))
            camera.** list = texts(key, value, known.objection);
        else if (value.is_boolean())
            camera.*std::get<std::optional<bool> InventoryCamera::*>(known.member) = value.value<bool>();
        else
            fail(region.begin, textOf(key.str()) + " has to be true or false.");
    }

    QString text(const toml::key& key, const toml::node& value)
    {
        const QString name = textOf(key.str());
        const auto* found = value.as_string();
        if (!found)
            fail(value.source().begin, name + " has to be a text.");
        else if (found->get().empty() && key.str() != "comment" && key.str() != "user_name")
            fail(value.source().begin, name + " is empty.");
        return found ? textOf(found->get()) : QString();
    }

    QString checked(const InventoryKey& known, const toml::key& key, const toml::node& value)
    {
        QString found = text(key, value);
        const QString objection = found.isEmpty() ? QString() : known.objection(found);
        if (!objection.isEmpty())
            fail(value.source().begin, textOf(key.str()) + ' ' + objection);
        return found;
    }

    QStringList texts(const toml::key& key, const toml::node& value, QString (*objectionTo)(QString&))
    {
        const toml::array* list = value.as_array();
        if (!list)
            fail(value.source().begin, textOf(key.str()) + " has to be a list of texts.");
        QStringList found;
        for (size_t i = 0; list && i < list->size(); ++i) {
            QString one = text(key, (*list)[i]);
            const QString objection = one.isEmpty() || !objectionTo ? QString() : objectionTo(one);
            if (!objection.isEmpty())
                fail((*list)[i].source().begin, textOf(key.str()) + ": " + quoted(one) + ' ' + objection);
            found += one;
        }
        return found;
    }

    void objectTo(const InventoryCamera& camera, const Position& at)
    {
        const QString title = "camera " + quoted(camera.name) + ' ';
        if (camera.name.isEmpty())
            fail(at, "a camera needs a name.");
        if (!camera.places.count("model"))
            fail(at, title + "has no model.");
        if (!camera.places.count("mac") && !camera.places.count("guid") && !camera.places.count("serial"))
            fail(at, title + "has no mac, guid or serial, so that nobody could tell it from others.");
        if (const QString objection = inventoryNameObjection(camera); !objection.isEmpty())
            fail(at, "the name " + quoted(camera.name) + ' ' + objection);
        for (const auto& [hash, file] : {std::pair("features_sha256", "features"), {"bag_sha256", "bag"}})
            if (camera.places.count(hash) && !camera.places.count(file))
                fail(at, title + "has " + hash + " without " + file + '.');
        if (!camera.mac.isEmpty() && camera.retired.contains(camera.mac))
            fail(at, title + "has a MAC address that is retired as well.");
    }

    // Serial numbers alone tell nothing from others that have a MAC address or a GUID.
    void findDoubles()
    {
        findDoubles("the MAC address", [](const InventoryCamera& camera) { return camera.mac; });
        findDoubles("the GUID", [](const InventoryCamera& camera) { return camera.guid; });
        findDoubles("the address", [](const InventoryCamera& camera) { return camera.address; });
        findDoubles("the model and serial number", [](const InventoryCamera& camera) {
            const bool hasMore = !(camera.mac + camera.guid).isEmpty();
            return hasMore || camera.serial.isEmpty() ? QString() : camera.model + ' ' + camera.serial;
        });
    }

    template <typename Of>
    void findDoubles(const char* what, const Of& of)
    {
        const std::vector<InventoryCamera>& cameras = m_reading.inventory.cameras;
        QMap<QString, size_t> first;
        for (size_t i = 0; i < cameras.size(); ++i) {
            const QString value = of(cameras[i]);
            const auto known = first.constFind(value);
            if (known != first.constEnd())
                fail(m_names[i],
                     QString("camera %1 has %2 of camera %3: %4.")
                         .arg(quoted(cameras[i].name), what, quoted(cameras[*known].name), value));
            else if (!value.isEmpty())
                first.insert(value, i);
        }
    }

    const QByteArray m_text;
    const TextPlaces m_places;
    InventoryReading m_reading;
    std::vector<Position> m_names; // of the cameras' tables
};

} // namespace

InventoryReading parseInventory(const QByteArray& text, const QString& path)
{
    return Reader(text, path).read();
}

} // namespace companion
