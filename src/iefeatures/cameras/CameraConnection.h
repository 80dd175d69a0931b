// An open camera that is closed at the end of the scope.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

namespace companion
{

class CameraConnection
{
public:
    // `accessMode`: a KX_ACCESS_ value. Blocks as KX_CC_OpenDevice does.
    CameraConnection(const KX_DeviceInfo& device, uint32_t accessMode)
    {
        m_status = KX_CC_CreateHandle(&m_handle, &device);
        if (m_status == KX_OK)
            m_status = KX_CC_OpenDevice(m_handle, accessMode, 0);
    }
    ~CameraConnection()
    {
        if (!m_handle)
            return;
        KX_CC_CloseDevice(m_handle);
        KX_CC_DestroyHandle(m_handle);
    }
    CameraConnection(const CameraConnection&) = delete;
    CameraConnection& operator=(const CameraConnection&) = delete;

    KX_Status status() const { return m_status; }
    KX_HANDLE handle() const { return m_handle; }

private:
    KX_HANDLE m_handle = nullptr;
    KX_Status m_status = KX_OK;
};

} // namespace companion
