#include "KXCameraControl/ports/SearchPlaces.h"

#include "KXCameraControl/ports/NameList.h"
#include "gvcp/Gvcp.h"

#include <algorithm>
#include <cstdlib>

namespace kx
{
namespace
{

constexpr char kInterfaces[] = "KX_CAMERA_INTERFACES";
constexpr char kAddresses[] = "KX_CAMERA_ADDRESSES";

bool isNamedBy(const std::string& name, const NetworkInterface& interface)
{
    return name == interface.name || gvcp::parseAddress(name) == interface.address;
}

void addNamedInterfaces(const std::vector<NetworkInterface>& all, const char* setting, SearchPlaces& places)
{
    const std::vector<std::string> names = nameList(setting);
    for (const NetworkInterface& interface : all)
        if (std::any_of(names.begin(), names.end(), [&](const std::string& name) {
                return name != "none" && isNamedBy(name, interface);
            }))
            places.interfaces.push_back(interface);
    for (const std::string& name : names) {
        const bool isThere = std::any_of(all.begin(), all.end(), [&](const NetworkInterface& interface) {
            return isNamedBy(name, interface);
        });
        if (name != "none" && !isThere)
            places.problems.push_back(std::string(kInterfaces) + ": \"" + name +
                                      "\" is no network interface that this machine has now.");
    }
}

void addAddresses(const char* setting, SearchPlaces& places)
{
    std::vector<uint32_t>& addresses = places.addresses;
    for (const std::string& text : nameList(setting)) {
        const auto address = gvcp::parseAddress(text);
        if (address && *address != 0)
            addresses.push_back(*address);
        else
            places.problems.push_back(std::string(kAddresses) + ": \"" + text +
                                      "\" is no address; several are separated by commas.");
    }
    std::sort(addresses.begin(), addresses.end());
    addresses.erase(std::unique(addresses.begin(), addresses.end()), addresses.end());
}

} // namespace

SearchPlaces searchPlaces()
{
    SearchPlaces places;
    const std::vector<NetworkInterface> all = networkInterfaces();
    if (const char* setting = std::getenv(kInterfaces))
        addNamedInterfaces(all, setting, places);
    else
        std::copy_if(all.begin(), all.end(), std::back_inserter(places.interfaces),
                     [](const NetworkInterface& interface) { return !interface.isLoopback; });
    addAddresses(std::getenv(kAddresses), places);
    return places;
}

} // namespace kx
