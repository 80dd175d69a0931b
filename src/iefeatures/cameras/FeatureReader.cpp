#include "iefeatures/cameras/FeatureReader.h"

#include "jobs/file/FeaturesFile.h"
#include <SuiteTools/SuiteTools.h>

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

QString stringObjection(const KX_StringValue& bounds, const QString& value)
{
    char bytes[256] = {};
    VELAInterface::CovertEncodeCharFromQString(value, bytes, sizeof bytes - 1);
    if (qint64(qstrlen(bytes)) <= bounds.maximumLength)
        return {};
    return QString("the text is longer than %1 bytes").arg(bounds.maximumLength);
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
    return reading.string ? stringObjection(*reading.string, value) : QString();
}

KX_Status FeatureReader::note(KX_Status status)
{
    if (m_lineStatus == KX_OK && KX_IS_LINE_FAILURE(status))
        m_lineStatus = status;
    return status;
}

// Names go to the camera library as the jobs give them there.
FeatureReader::Reading FeatureReader::read(const QString& type, const QString& name)
{
    Reading reading;
    const QByteArray latin1 = name.toLatin1();
    if (type == "Boolean") {
        bool value = false;
        reading.status = note(KX_CC_GetBoolValue(m_handle, latin1.constData(), &value));
        reading.text = ie::booleanText(value);
    } else if (type == "Enumeration") {
        KX_EnumValue value = {};
        reading.status = note(KX_CC_GetEnumValue(m_handle, latin1.constData(), &value));
        reading.text = ie::enumerationText(value.current);
        reading.enumeration = value;
    } else if (type == "Float") {
        KX_FloatValue value = {};
        reading.status = note(KX_CC_GetFloatValue(m_handle, latin1.constData(), &value));
        reading.text = ie::floatText(value.current);
        reading.real = value;
    } else if (type == "StringReg") {
        KX_StringValue value = {};
        reading.status = note(KX_CC_GetStringValue(m_handle, name.toLocal8Bit().constData(), &value));
        reading.text = VELAInterface::char2QStringLocale(value.current, -1);
        reading.string = value;
    } else {
        readInteger(latin1.constData(), reading);
    }
    if (!reading.isGood())
        return Reading{reading.status, {}, {}, {}, {}, {}, {}};
    if (reading.text.isNull())
        reading.text = "";
    return reading;
}

// An origin that cannot be told speaks against no value.
void FeatureReader::readInteger(const char* name, Reading& reading)
{
    KX_IntegerValue value = {};
    reading.status = note(KX_CC_GetIntValueEx(m_handle, name, &value));
    reading.text = ie::integerText(value.current);
    reading.integer = value;
    int64_t origin = 0;
    if (value.increment > 1 && note(KX_CC_GetIntIncrementOrigin(m_handle, name, &origin)) == KX_OK)
        reading.incrementOrigin = origin;
}

KX_Status FeatureReader::readMemory(qint64 address, qint64 length, QByteArray& bytes)
{
    bytes.fill('\0', int(length));
    return note(KX_CC_ReadMemory(m_handle, bytes.data(), address, length));
}

FeatureReader::Access FeatureReader::access(const QString& name)
{
    Access access;
    access.status = note(KX_XML_GetNodeAccessMode(m_handle, name.toLocal8Bit().constData(), &access.mode));
    return access;
}

bool FeatureReader::Access::isWritable() const
{
    return status == KX_OK && (mode == KX_AM_WRITE_ONLY || mode == KX_AM_READ_WRITE);
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
