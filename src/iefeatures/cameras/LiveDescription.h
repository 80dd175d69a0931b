// What a camera's description and its present state say about features, without taking control of it.
#pragma once

#include "iefeatures/cameras/CameraConnection.h"

#include <QString>

namespace companion
{

class LiveDescription
{
public:
    // Blocks until the description is fetched. Without a connection nothing is known of any feature.
    explicit LiveDescription(const KX_DeviceInfo& device) : m_connection(device, KX_ACCESS_MONITOR) {}

    KX_Status status() const { return m_connection.status(); }
    // The symbolic name of an enumeration's number; empty when it has none.
    QString entryName(const QString& feature, const QString& number) const;
    // Whether the feature can be read and not be written now.
    bool isReadOnly(const QString& feature) const;

private:
    CameraConnection m_connection;
};

} // namespace companion
