#include "iefeatures/running/ObservedChanges.h"

#include "digest/Digest.h"
#include "iefeatures/running/CallKind.h"
#include "iefeatures/running/FailedCalls.h"

#include <SuiteTools/SuiteTools.h>

#include <algorithm>

namespace companion
{
namespace
{

QString hexadecimal(const void* bytes, int64_t length)
{
    return QString::fromLatin1(QByteArray(static_cast<const char*>(bytes), int(length)).toHex());
}

QString real(float value)
{
    return QString::number(double(value), 'f', 6);
}

// Empty for an operation that is none on a value.
QString textOf(const KX_CallEvent& event)
{
    const void* value = event.value;
    switch (event.operation) {
    case KX_OP_GET_BOOL:
    case KX_OP_SET_BOOL:
        return *static_cast<const bool*>(value) ? "1" : "0";
    case KX_OP_GET_ENUM:
        return QString::number(static_cast<const KX_EnumValue*>(value)->current);
    case KX_OP_SET_ENUM:
        return QString::number(*static_cast<const uint32_t*>(value));
    case KX_OP_GET_FLOAT:
        return real(static_cast<const KX_FloatValue*>(value)->current);
    case KX_OP_SET_FLOAT:
        return real(*static_cast<const float*>(value));
    case KX_OP_GET_INT:
        return QString::number(static_cast<const KX_IntegerValue*>(value)->current);
    case KX_OP_SET_INT:
        return QString::number(*static_cast<const int64_t*>(value));
    case KX_OP_GET_STRING:
        return VELAInterface::char2QStringLocale(static_cast<const KX_StringValue*>(value)->current, -1);
    case KX_OP_SET_STRING:
        return VELAInterface::char2QStringLocale(static_cast<const char*>(value), -1);
    case KX_OP_READ_MEMORY:
    case KX_OP_WRITE_MEMORY:
        return hexadecimal(value, event.length);
    default:
        return {};
    }
}

// Without its values.
Change thingOf(const KX_CallEvent& event)
{
    if (isOnMemory(event))
        return {{}, true, event.address, {}, {}};
    return {QString::fromUtf8(event.nodeName), false, 0, {}, {}};
}

template <typename Key>
QString valueIn(const std::map<Key, QString>& known, const Key& key)
{
    const auto found = known.find(key);
    return found == known.end() ? QString() : found->second;
}

} // namespace

void ObservedChanges::take(const KX_CallEvent& event)
{
    const bool isOnThing = isOnMemory(event) || (isOnValue(event) && event.nodeName);
    if (!event.finished)
        return;
    if (isOnThing)
        settle(event);
    if (event.status != KX_OK || !event.value)
        return;
    if (event.operation == KX_OP_OPEN)
        m_description = QByteArray(static_cast<const char*>(event.value));
    else if (isOnThing)
        takeValue(event);
}

void ObservedChanges::takeValue(const KX_CallEvent& event)
{
    Change thing = thingOf(event);
    const QString text = textOf(event);
    QString& known = thing.isRegister ? m_registers[thing.address] : m_features[thing.feature];
    if (isWrite(event) && (known.isNull() || known != text)) {
        thing.from = known;
        thing.to = text;
        m_changes.push_back(thing);
    }
    known = text.isNull() ? QString("") : text;
    if (thing.isRegister)
        m_seenRegisters.insert(thing.address);
    else
        m_seenFeatures.insert(thing.feature);
}

// A refused call, and one that the camera refuses, leave things as they were.
void ObservedChanges::settle(const KX_CallEvent& event)
{
    const bool isInDoubt = isWrite(event) && tellsLineFailure(event);
    if (event.status != KX_OK && !isInDoubt)
        return;
    Change thing = thingOf(event);
    const auto isIt = [&thing](const Change& other) {
        return other.isRegister == thing.isRegister && other.address == thing.address &&
               other.feature == thing.feature;
    };
    m_inDoubt.erase(std::remove_if(m_inDoubt.begin(), m_inDoubt.end(), isIt), m_inDoubt.end());
    if (!isInDoubt)
        return;
    thing.from = thing.isRegister ? valueIn(m_registers, thing.address) : value(thing.feature);
    m_inDoubt.push_back(thing);
}

QString ObservedChanges::descriptionHash() const
{
    if (m_description.isEmpty())
        return {};
    const std::string_view text(m_description.constData(), size_t(m_description.size()));
    return QString::fromStdString(digest::hexText(digest::sha256(text)));
}

QString ObservedChanges::firmware() const
{
    return value("DeviceFirmwareVersion");
}

QString ObservedChanges::value(const QString& feature) const
{
    return valueIn(m_features, feature);
}

} // namespace companion
