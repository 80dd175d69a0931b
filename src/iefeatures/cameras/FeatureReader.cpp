#include "iefeatures/cameras/FeatureReader.h"

#include "jobs/file/FeaturesFile.h"
#include "jobs/rules/ImportRules.h"

#include <algorithm>

namespace companion
{
namespace
{

bool isStep(qint64 value, qint64 origin, qint64 increment)
{
    const quint64 distance =
        origin <= value ? quint64(value) - quint64(origin) : quint64(origin) - quint64(value);
    return distance % quint64(std::max<qint64>(increment, 1)) == 0;
}

QString integerObjection(const FeatureReader::Reading& reading, const QString& value)
{
    const KX_IntegerValue& bounds = *reading.integer;
    const qint64 number = value.toLongLong();
    if (number < bounds.minimum)
        return QString("%1 is below the minimum %2").arg(value).arg(bounds.minimum);
    if (number > bounds.maximum)
        return QString("%1 is above the maximum %2").arg(value).arg(bounds.maximum);
    if (reading.incrementOrigin && !isStep(number, *reading.incrementOrigin, bounds.increment))
        return QString("%1 is no multiple of the increment %2, counted from %3")
            .arg(value)
            .arg(bounds.increment)
            .arg(*reading.incrementOrigin);
    return {};
}

QString enumerationObjection(const KX_EnumValue& entries, const QString& value)
{
    const auto end = entries.supported + std::min<uint32_t>(entries.supportedCount, KX_ENUM_CAPACITY);
    const bool mayHaveMore = entries.supportedCount >= KX_ENUM_CAPACITY; // than the record holds
    if (mayHaveMore || std::find(entries.supported, end, value.toUInt()) != end)
        return {};
    return value + " is no entry that it has now";
}

QString realObjection(const KX_FloatValue& bounds, const QString& value)
{
    const float number = value.toFloat();
    if (number < bounds.minimum)
        return value + " is below the minimum " + ie::floatText(bounds.minimum);
    if (number > bounds.maximum)
        return value + " is above the maximum " + ie::floatText(bounds.maximum);
    return {};
}

QString stringObjection(qint64 longest, const QString& value)
{
    if (qint64(qstrlen(ie::importedBytes(value).constData())) <= longest)
        return {};
    return QString("the text is longer than %1 bytes").arg(longest);
}

} // namespace

QString rangeObjection(const FeatureReader::Reading& reading, const QString& value)
{
    if (reading.integer)
        return integerObjection(reading, value);
    if (reading.enumeration)
        return enumerationObjection(*reading.enumeration, value);
    if (reading.real)
        return realObjection(*reading.real, value);
    return reading.longestText ? stringObjection(*reading.longestText, value) : QString();
}

KX_Status FeatureReader::note(KX_Status status)
{
    if (m_lineStatus == KX_OK && KX_IS_LINE_FAILURE(status))
        m_lineStatus = status;
    return status;
}

// An origin that cannot be told speaks against no value.
FeatureReader::Reading FeatureReader::read(ie::FeatureKind kind, const QString& name)
{
    Reading reading{ie::readFeature(m_camera, kind, name), {}};
    note(reading.status);
    int64_t origin = 0;
    if (reading.integer && reading.integer->increment > 1 &&
        note(KX_CC_GetIntIncrementOrigin(m_handle, name.toLatin1().constData(), &origin)) == KX_OK)
        reading.incrementOrigin = origin;
    return reading;
}

KX_Status FeatureReader::readMemory(qint64 address, qint64 length, void* buffer)
{
    int code = KX_OK;
    m_camera.readMemory(address, buffer, length, &code);
    return note(static_cast<KX_Status>(code));
}

FeatureReader::Access FeatureReader::access(const QString& name)
{
    Access access;
    int code = KX_OK;
    access.mode = m_camera.accessMode(name, &code);
    access.status = note(static_cast<KX_Status>(code));
    return access;
}

bool FeatureReader::Access::isWritable() const
{
    return status == KX_OK && ie::isWritable(mode);
}

bool FeatureReader::Access::isAbsent() const
{
    return status == KX_E_GC_PROPERTY || (status == KX_OK && mode == KX_AM_NOT_IMPLEMENTED);
}

QString FeatureReader::Access::text() const
{
    if (status != KX_OK)
        return KX_CC_StatusText(status);
    switch (mode) {
    case KX_AM_NOT_IMPLEMENTED:
        return "not implemented";
    case KX_AM_NOT_AVAILABLE:
        return "not available now";
    case KX_AM_WRITE_ONLY:
        return "write-only now";
    case KX_AM_READ_ONLY:
        return "read-only now";
    case KX_AM_READ_WRITE:
        return "writable now";
    default:
        return "broken in the camera's description";
    }
}

} // namespace companion
