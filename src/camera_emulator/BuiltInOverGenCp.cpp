#include "camera_emulator/BuiltIn.h"

#include "gencp/Gencp.h"

#include <cstdio>

namespace emu
{

namespace
{

struct Place
{
    const char* node;
    uint32_t address;
};

constexpr Place kNames[] = {
    {"DeviceVendorName", gencp::RegManufacturer},   {"DeviceModelName", gencp::RegModel},
    {"DeviceVersion", gencp::RegDeviceVersion},     {"DeviceManufacturerInfo", gencp::RegManufacturerInfo},
    {"DeviceSerialNumber", gencp::RegSerialNumber}, {"DeviceUserID", gencp::RegUserName},
};

// The content of the first element of that tag behind `from`.
void replaceElement(std::string& text, size_t from, const std::string& tag, const std::string& content)
{
    const size_t begin = text.find('<' + tag + '>', from) + tag.size() + 2;
    text.replace(begin, text.find("</" + tag + '>', begin) - begin, content);
}

// With a version of its own: who remembers descriptions tells them apart by that.
std::string withGenCpNames(std::string text)
{
    const std::string version = "VersionGuid=\"";
    text.replace(text.find(version) + version.size(), 8, "8F6C1B53");
    for (const Place& name : kNames) {
        const size_t node = text.find("<StringReg Name=\"" + std::string(name.node) + "\">");
        char address[16];
        std::snprintf(address, sizeof address, "0x%04X", name.address);
        replaceElement(text, node, "Address", address);
        replaceElement(text, node, "Length", std::to_string(gencp::kTextSize));
    }
    return text;
}

} // namespace

const std::string& builtInDescriptionOverGenCp()
{
    static const std::string text = withGenCpNames(builtInDescription());
    return text;
}

} // namespace emu
