// Where Camera Link cameras may hang: the lines that KX_CAMERA_SERIAL_PORTS names (paths, comma-separated),
// and the ports of the serial libraries in the folders of CLSERIALPATH.
#pragma once

#include "KXCameraControl/ports/cameralink/SerialLine.h"
#include "KXCameraControl/ports/gentl/HostLink.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kx
{

struct SerialPlace
{
    std::string name;          // the line's path; of a library's port what the library calls it
    std::string serialLibrary; // path; empty: a line of the operating system
    uint32_t index = 0;        // of the library's port

    // The record's fields of a camera there.
    void putInto(KX_CameraLinkDeviceInfo& info) const;
};

std::vector<SerialPlace> namedLines();
std::vector<SerialPlace> portsOf(HostLink& library, HostReply& reply);

// That of a record; nothing: it is of a line or a library that is not there any more.
std::optional<SerialPlace> placeOf(const KX_DeviceInfo& device);
std::unique_ptr<SerialLine> lineAt(const SerialPlace& place);

} // namespace kx
