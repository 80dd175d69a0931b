#include "iefeatures/running/ObservedChanges.h"

#include "digest/Digest.h"

#include <SuiteTools/SuiteTools.h>

#include <cstring>

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

bool isOnFeature(uint32_t operation)
{
    return operation >= KX_OP_GET_BOOL && operation <= KX_OP_SET_STRING;
}

} // namespace

void ObservedChanges::take(const KX_CallEvent& event)
{
    if (!event.finished || event.status != KX_OK || !event.value)
        return;
    if (event.operation == KX_OP_OPEN) {
        m_description = QByteArray(static_cast<const char*>(event.value));
    } else if (event.operation == KX_OP_READ_MEMORY || event.operation == KX_OP_WRITE_MEMORY) {
        const Change thing{{}, true, event.address, {}, {}};
        takeValue(thing, event.operation == KX_OP_WRITE_MEMORY, textOf(event), m_registers[event.address]);
        m_seenRegisters.insert(event.address);
    } else if (isOnFeature(event.operation) && event.nodeName) {
        const Change thing{QString::fromUtf8(event.nodeName), false, 0, {}, {}};
        takeValue(thing, event.operation >= KX_OP_SET_BOOL, textOf(event), m_features[thing.feature]);
        m_seenFeatures.insert(thing.feature);
    }
}

void ObservedChanges::takeValue(const Change& thing, bool isWrite, const QString& text, QString& known)
{
    if (isWrite && (known.isNull() || known != text)) {
        m_changes.push_back(thing);
        m_changes.back().from = known;
        m_changes.back().to = text;
    }
    known = text.isNull() ? QString("") : text;
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
    const auto found = m_features.find(feature);
    return found == m_features.end() ? QString() : found->second;
}

} // namespace companion
