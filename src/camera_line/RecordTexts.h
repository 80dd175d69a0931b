// The texts of a device record: which field each of them is, by transport, and how it is read.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QByteArray>
#include <QString>

#include <vector>

namespace camera_line
{

// A text field inside a record, as wide as the record says. Valid as long as the record.
struct Field
{
    const uint8_t* bytes = nullptr; // null: the transport has no such field
    int size = 0;

    // Up to the first zero byte or the field's end. Empty without a field.
    QByteArray content() const;
    // The same under the suite's encoding, by VELAInterface::GetEncodeQStringFromUnChar with the field's
    // size, which is called once, and not at all without a field.
    QString text() const;
};

// "GigE", "U3V" or "CL"; empty for any other transport.
QString transportWord(uint32_t transport);
// The transport layer's own name, as people are shown it: "CXP", "CLHS", ... where a producer tells it, else
// the word above.
QString layerWord(const KX_DeviceInfo& device);

Field modelField(const KX_DeviceInfo& device);
Field serialField(const KX_DeviceInfo& device);
Field userNameField(const KX_DeviceInfo& device); // GigE and USB3
Field portIdField(const KX_DeviceInfo& device);   // Camera Link

// What tells a USB3 or Camera Link camera from others of its serial number, the model among it. Empty for the
// others.
std::vector<Field> identifyingFields(const KX_DeviceInfo& device);

// "AA:BB:CC:DD:EE:FF" for GigE, else empty.
QString macText(const KX_DeviceInfo& device);

QString dottedQuad(uint32_t address); // of an IPv4 address in host byte order

// Where the camera answers: GigE a dotted quad, Camera Link the port; USB3 has no address: empty.
QString addressText(const KX_DeviceInfo& device);

} // namespace camera_line
