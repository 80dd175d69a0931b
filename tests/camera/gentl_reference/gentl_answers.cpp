// What the camera library makes of the cameras behind the producers that GENICAM_GENTL64_PATH names, a line
// each:
//   gentl_answers FOLDER       (feature bags go there)
#include <KXCameraControl/KXCameraControl.h>

#include <cstdio>
#include <string>

namespace
{

const char* text(const uint8_t* field)
{
    return reinterpret_cast<const char*>(field);
}

// Reads a feature, writes it back, saves all and loads them again; the first failure.
KX_Status use(KX_HANDLE handle, const std::string& bag, int64_t& width)
{
    KX_IntegerValue value{};
    KX_Status status = KX_CC_GetIntValueEx(handle, "Width", &value);
    width = value.current;
    if (status == KX_OK)
        status = KX_CC_SetIntValueEx(handle, "Width", value.current);
    if (status == KX_OK)
        status = KX_CC_FeatureSave(handle, bag.c_str());
    return status == KX_OK ? KX_CC_FeatureLoad(handle, bag.c_str()) : status;
}

void tell(const KX_DeviceEntry& entry, const std::string& folder)
{
    const KX_CameraLinkDeviceInfo& info = entry.info.special.cameraLink;
    const std::string bag = folder + "/" + text(info.serialNumber) + ".bag";
    KX_HANDLE handle = nullptr;
    int64_t width = 0;
    KX_CC_CreateHandle(&handle, &entry.info);
    KX_Status status = KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0);
    if (status == KX_OK)
        status = use(handle, bag, width);
    char error[1024] = {};
    uint32_t length = 0;
    KX_CC_GetLastErrorText(handle, error, sizeof error, &length);
    std::printf("%s|%s|%s|%s|%u|%u|%lld|%s\n", text(info.layerName), text(info.modelName),
                text(info.serialNumber), text(info.portId), entry.availability, status,
                static_cast<long long>(width), status == KX_OK ? "" : error);
    KX_CC_DestroyHandle(handle);
}

} // namespace

int main(int, char** arguments)
{
    KX_DeviceEntry entries[16];
    uint32_t count = 0;
    const KX_Status status = KX_CC_EnumDevices(KX_TRANSPORT_CAMERA_LINK, entries, 16, &count);
    for (uint32_t i = 0; i < count && i < 16; ++i)
        tell(entries[i], arguments[1]);
    return status == KX_OK ? 0 : 1;
}
