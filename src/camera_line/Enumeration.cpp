#include "camera_line/Enumeration.h"

#include <cstddef>

namespace camera_line
{
namespace
{

constexpr std::size_t kFirstCapacity = 64; // one look is enough on nearly every line

} // namespace

KX_Status enumerateCameras(uint32_t transports, std::vector<KX_DeviceEntry>& entries)
{
    entries.resize(kFirstCapacity);
    for (;;) {
        uint32_t count = 0;
        const auto capacity = static_cast<uint32_t>(entries.size());
        const KX_Status status = KX_CC_EnumDevices(transports, entries.data(), capacity, &count);
        entries.resize(status == KX_OK ? count : 0);
        if (status != KX_OK || count <= capacity)
            return status;
    }
}

} // namespace camera_line
