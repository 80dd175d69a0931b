// What Windows has lines for so far, and a word on what it has none for.
#include "KXCameraControl/ports/Transport.h"
#include "KXCameraControl/ports/gige/GigeDiscovery.h"

namespace kx
{

namespace
{

Transport missingTransports()
{
    Transport missing{};
    missing.type = KX_TRANSPORT_USB3 | KX_TRANSPORT_CAMERA_LINK; // no record has both: no camera is its
    missing.find = [](std::vector<KX_DeviceEntry>&) { return KX_Status(KX_OK); };
    missing.stamp = [] { return uint32_t(0); };
    missing.problems = [] {
        return std::vector<std::string>{
            "On Windows only GigE Vision cameras are looked for: those of USB3 Vision, "
            "Camera Link and GenTL producers are left out."};
    };
    return missing;
}

} // namespace

const std::vector<Transport>& transports()
{
    static const std::vector<Transport> table{gigeTransport(), missingTransports()};
    return table;
}

} // namespace kx
