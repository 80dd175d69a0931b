// What a camera's description and its present state say about features, without taking control of it.
#pragma once

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/DescriptionWords.h"
#include "iefeatures/cameras/FeatureNature.h"

#include <QString>

namespace companion
{

class LiveDescription
{
public:
    // Blocks until the description is fetched. Without a connection nothing is known of any feature.
    // `settled`: as a FeatureNature takes it.
    LiveDescription(const KX_DeviceInfo& device, const FeatureNature::Settled& settled);

    KX_Status status() const { return m_connection.status(); }
    // The symbolic name of an enumeration's number; empty when it has none.
    QString entryName(const QString& feature, const QString& number);
    // As DescriptionWords has them.
    QString selectors(const QString& feature, const QString& variables);
    QString category(const QString& feature);
    // Whether the feature can be read and not be written now.
    bool isReadOnly(const QString& feature);
    // Of a feature that a file has as its value, or as the registers behind it.
    Nature nature(const QString& feature, bool isRegisterBlock);

private:
    CameraConnection m_connection;
    FeatureReader m_reader{m_connection.handle()};
    FeatureNature m_nature;
    DescriptionWords m_words;
};

} // namespace companion
