#include "iefeatures/imports/UserSet.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/console/Text.h"

#include <SuiteTools/SuiteTools.h>

#include <QByteArray>
#include <QXmlStreamReader>

#include <optional>

namespace companion
{
namespace
{

QByteArray descriptionOf(KX_HANDLE handle)
{
    uint32_t length = 0;
    char probe = 0;
    if (KX_XML_GetGenICamXML(handle, &probe, 1, &length) != KX_E_BUFFER_TOO_SMALL)
        return {};
    QByteArray text(int(length), '\0');
    if (KX_XML_GetGenICamXML(handle, text.data(), length, &length) != KX_OK)
        return {};
    text.chop(1);
    return text;
}

struct Entry
{
    QString name; // its symbolic one where it has one
    QString value;
};

Entry readEntry(QXmlStreamReader& reader)
{
    Entry entry{reader.attributes().value("Name").toString(), {}};
    while (reader.readNextStartElement()) {
        if (reader.name() == QLatin1String("Symbolic"))
            entry.name = reader.readElementText();
        else if (reader.name() == QLatin1String("Value"))
            entry.value = reader.readElementText().trimmed();
        else
            reader.skipCurrentElement();
    }
    return entry;
}

// The number that stands behind an entry of an enumeration.
std::optional<uint32_t> entryValue(const QByteArray& description, const QString& enumeration,
                                   const QString& name)
{
    QXmlStreamReader reader(description);
    bool isInside = false;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::EndElement && reader.name() == QLatin1String("Enumeration"))
            isInside = false;
        if (token != QXmlStreamReader::StartElement)
            continue;
        if (reader.name() == QLatin1String("Enumeration"))
            isInside = reader.attributes().value("Name") == enumeration;
        if (!isInside || reader.name() != QLatin1String("EnumEntry"))
            continue;
        const Entry entry = readEntry(reader);
        if (entry.name == name)
            return uint32_t(VELAInterface::string2Int(entry.value));
    }
    return {};
}

QString sentence(const QString& what, KX_Status status)
{
    return what + ": " + KX_CC_StatusText(status);
}

// Empty when it took.
QString choose(KX_HANDLE handle, const QByteArray& description, const char* selector, const QString& name)
{
    const std::optional<uint32_t> value = entryValue(description, selector, name);
    if (!value)
        return QString("%1 has no entry %2.").arg(selector, printable(name));
    const KX_Status status = KX_CC_SetEnumValue(handle, selector, *value);
    return status == KX_OK ? QString() : sentence(QString("%1 did not take %2").arg(selector, name), status);
}

bool exists(KX_HANDLE handle, const char* name)
{
    KX_XML_AccessMode mode = KX_AM_UNDEFINED;
    return KX_XML_GetNodeAccessMode(handle, name, &mode) == KX_OK && mode != KX_AM_NOT_IMPLEMENTED;
}

} // namespace

QString saveUserSet(const ListedCamera& camera, const UserSet& set)
{
    const CameraConnection line(camera.device.stDeviceInfo, KX_ACCESS_EXCLUSIVE);
    if (line.status() != KX_OK)
        return sentence("the camera could not be opened", line.status());
    const QByteArray description = descriptionOf(line.handle());
    QString problem = choose(line.handle(), description, "UserSetSelector", set.name);
    if (!problem.isEmpty())
        return problem;
    const KX_Status saved = KX_CC_ExecuteCommand(line.handle(), "UserSetSave");
    if (saved != KX_OK)
        return sentence("UserSetSave failed", saved);
    if (!set.isForStartUp)
        return {};
    const bool isNew = exists(line.handle(), "UserSetDefault");
    return choose(line.handle(), description, isNew ? "UserSetDefault" : "UserSetDefaultSelector", set.name);
}

} // namespace companion
