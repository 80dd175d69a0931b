#include "iefeatures/cameras/LiveDescription.h"

namespace companion
{

LiveDescription::LiveDescription(const KX_DeviceInfo& device, const FeatureNature::Settled& settled)
    : m_connection(device, KX_ACCESS_MONITOR),
      m_nature(m_reader, device.transportType == KX_TRANSPORT_GIGE, settled),
      m_words(m_connection.handle(), device.transportType == KX_TRANSPORT_GIGE)
{}

QString LiveDescription::selectors(const QString& feature, const QString& variables)
{
    return m_words.selectors(feature, variables);
}

QString LiveDescription::category(const QString& feature)
{
    return m_words.category(feature);
}

QString LiveDescription::entryName(const QString& feature, const QString& number)
{
    bool isNumber = false;
    const uint32_t value = number.toUInt(&isNumber);
    return isNumber ? m_reader.entryName(feature, value) : QString();
}

bool LiveDescription::isReadOnly(const QString& feature)
{
    const FeatureReader::Access access = m_reader.access(feature);
    return access.status == KX_OK && access.mode == KX_AM_READ_ONLY;
}

Nature LiveDescription::nature(const QString& feature, bool isRegisterBlock)
{
    return isRegisterBlock ? m_nature.ofBlock(feature) : m_nature.of(feature);
}

} // namespace companion
