#include "iefeatures/cameras/LiveDescription.h"

namespace companion
{
namespace
{

constexpr uint32_t kLongestName = 512; // bytes, the final zero included

} // namespace

QString LiveDescription::entryName(const QString& feature, const QString& number) const
{
    bool isNumber = false;
    const uint32_t value = number.toUInt(&isNumber);
    char text[kLongestName] = {};
    uint32_t length = 0;
    if (!isNumber || KX_CC_GetEnumEntryName(m_connection.handle(), feature.toUtf8().constData(), value, text,
                                            sizeof text, &length) != KX_OK)
        return {};
    return QString::fromUtf8(text);
}

bool LiveDescription::isReadOnly(const QString& feature) const
{
    KX_XML_AccessMode mode = KX_AM_UNDEFINED;
    return KX_XML_GetNodeAccessMode(m_connection.handle(), feature.toUtf8().constData(), &mode) == KX_OK &&
           mode == KX_AM_READ_ONLY;
}

} // namespace companion
