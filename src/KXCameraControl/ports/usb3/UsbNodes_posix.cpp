#include "KXCameraControl/ports/Stamp.h"
#include "KXCameraControl/ports/usb3/UsbNodes.h"

#include <dirent.h>
#include <libusb.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <vector>

namespace kx
{

namespace
{

constexpr char kNodes[] = "/dev/bus/usb";

std::vector<std::string> namesIn(const std::string& folder)
{
    std::vector<std::string> names;
    if (DIR* open = ::opendir(folder.c_str())) {
        while (const dirent* entry = ::readdir(open))
            if (entry->d_name[0] != '.')
                names.emplace_back(entry->d_name);
        ::closedir(open);
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

bool isUsbNodeThere(const UsbPlace& place)
{
    char path[64];
    std::snprintf(path, sizeof path, "%s/%03u/%03u", kNodes, place.bus, place.address);
    return ::access(path, F_OK) == 0;
}

uint32_t usbNodesStamp()
{
    Stamp stamp;
    const auto buses = namesIn(kNodes);
    for (const std::string& bus : buses) {
        stamp.add(bus.c_str(), bus.size() + 1);
        for (const std::string& device : namesIn(std::string(kNodes) + "/" + bus))
            stamp.add(device.c_str(), device.size() + 1);
    }
    return buses.empty() ? 0 : stamp.value();
}

std::string usbSystemText(const std::string& location, const char* name)
{
    std::ifstream file("/sys/bus/usb/devices/" + location + "/" + name);
    std::string text;
    std::getline(file, text);
    return text;
}

bool areUsbEventsTold()
{
    return ::access("/run/udev/control", F_OK) == 0;
}

bool isUsbOpeningRefused(int code)
{
    return code == LIBUSB_ERROR_ACCESS;
}

bool isUsbInUse(int)
{
    return false;
}

const char* usbOpeningHelp()
{
    return "this user may not open the camera. Where 60-usb3-vision.rules lies in a folder of udev rules, "
           "plugging the camera in anew lets whoever sits here and the group plugdev open it.";
}

} // namespace kx
