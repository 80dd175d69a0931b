#include "iefeatures/cameras/FeatureReader.h"

#include "iefeatures/cameras/LastError.h"

#include "jobs/file/FeaturesFile.h"
#include "jobs/rules/ImportRules.h"

#include <algorithm>

namespace companion
{
namespace
{

constexpr int kRoomForNames = 512; // bytes, the final zero included

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
    const bool mayHaveMore = entries.supportedCount > KX_ENUM_CAPACITY; // than the record holds
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

QString textObjection(qint64 longest, const QString& value)
{
    if (ie::importedBytes(value).size() <= longest)
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
    return reading.longestText ? textObjection(*reading.longestText, value) : QString();
}

KX_Status FeatureReader::note(KX_Status status)
{
    if (m_lineStatus == KX_OK && KX_IS_LINE_FAILURE(status)) {
        m_lineStatus = status;
        m_lineText = failureText(status, lastErrorText());
    }
    return status;
}

// An increment's origin that cannot be told speaks against no value.
FeatureReader::Reading FeatureReader::read(ie::FeatureKind kind, const QString& name)
{
    Reading reading{ie::readFeature(m_nodes, kind, name), {}};
    note(reading.status);
    int64_t origin = 0;
    if (reading.integer && reading.integer->increment > 1 &&
        note(KX_CC_GetIntIncrementOrigin(m_handle, name.toLatin1().constData(), &origin)) == KX_OK)
        reading.incrementOrigin = origin;
    return reading;
}

KX_Status FeatureReader::readMemory(qint64 address, void* bytes, qint64 length)
{
    return note(KX_CC_ReadMemory(m_handle, bytes, address, length));
}

FeatureReader::Access FeatureReader::access(const QString& name)
{
    Access access;
    access.status = note(KX_XML_GetNodeAccessMode(m_handle, name.toLocal8Bit().constData(), &access.mode));
    return access;
}

std::optional<bool> FeatureReader::isEverWritable(const QString& name)
{
    bool isWritable = false;
    if (note(KX_CC_IsEverWritable(m_handle, name.toUtf8().constData(), &isWritable)) != KX_OK)
        return {};
    return isWritable;
}

bool FeatureReader::isNeverWritten(qint64 address, qint64 length)
{
    KX_RegisterCoverage coverage{};
    const KX_Status status = note(KX_CC_GetRegisterCoverage(m_handle, address, length, &coverage));
    return status == KX_OK && coverage.registers > 0 && coverage.writable == 0 &&
           coverage.unplacedWritable == 0;
}

bool FeatureReader::isCovered(qint64 address, qint64 length)
{
    KX_RegisterCoverage coverage{};
    const KX_Status status = note(KX_CC_GetRegisterCoverage(m_handle, address, length, &coverage));
    return status != KX_OK || coverage.registers > 0 || coverage.unplaced > 0;
}

QStringList FeatureReader::relatedNames(const QString& name, KX_Relation relation)
{
    const QByteArray node = name.toUtf8();
    QByteArray text(kRoomForNames, '\0');
    uint32_t length = 0;
    const auto ask = [&] {
        return KX_CC_GetRelatedNames(m_handle, node.constData(), relation, text.data(), uint32_t(text.size()),
                                     &length);
    };
    KX_Status status = ask();
    if (status == KX_E_BUFFER_TOO_SMALL) {
        text.resize(int(length) + 1);
        status = ask();
    }
    return note(status) == KX_OK ? QString::fromUtf8(text.constData()).split('\n', Qt::SkipEmptyParts)
                                 : QStringList();
}

QString FeatureReader::descriptionProblem()
{
    return access("Root").status == KX_E_GC_PROPERTY ? KX_CC_StatusText(KX_E_DESCRIPTION) : QString();
}

// A name that is longer than that is none to tell; the line has not failed.
QString FeatureReader::entryName(const QString& enumeration, uint32_t number)
{
    char text[kRoomForNames] = {};
    uint32_t length = 0;
    const KX_Status status = KX_CC_GetEnumEntryName(m_handle, enumeration.toUtf8().constData(), number, text,
                                                    sizeof text, &length);
    if (status != KX_E_BUFFER_TOO_SMALL)
        note(status);
    return status == KX_OK ? QString::fromUtf8(text) : QString();
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
