// What programs that watch for cameras ask of the machine's network.
#include "KXCameraControl/ports/gige/Socket.h"

#include <KXCameraControl/KXCameraControl.h>

namespace
{

// FNV-1a over everything that makes an interface another one.
class Stamp
{
public:
    void add(const void* data, size_t size)
    {
        for (size_t i = 0; i < size; ++i)
            m_value = (m_value ^ static_cast<const uint8_t*>(data)[i]) * 16777619u;
    }
    uint32_t value() const { return m_value ? m_value : 1; }

private:
    uint32_t m_value = 2166136261u;
};

} // namespace

uint32_t KX_CC_GetInterfaceStamp(void)
{
    try {
        const auto interfaces = kx::networkInterfaces();
        Stamp stamp;
        for (const kx::NetworkInterface& interface : interfaces) {
            stamp.add(interface.name.c_str(), interface.name.size() + 1);
            stamp.add(&interface.address, sizeof interface.address);
            stamp.add(&interface.broadcast, sizeof interface.broadcast);
        }
        return interfaces.empty() ? 0 : stamp.value();
    } catch (...) {
        return 0;
    }
}
