#include "iefeatures/running/SignalPrinter.h"

#include <nlohmann/json.hpp>

namespace companion
{
namespace
{

std::string line(const nlohmann::ordered_json& signal)
{
    return signal.dump() + "\n";
}

} // namespace

void SignalPrinter::begin(const ListedCamera& camera, unsigned type)
{
    m_console.out(line({{"signal", "begin"}, {"device", camera.device.nDeviceID}, {"type", type}}));
}

void SignalPrinter::info(const ListedCamera& camera, const QString& message, bool isFailure)
{
    m_console.out(line({{"signal", "info"},
                        {"device", camera.device.nDeviceID},
                        {"failed", isFailure},
                        {"message", message.toStdString()}}));
}

void SignalPrinter::end(const ListedCamera& camera, unsigned type, const QString& path)
{
    m_console.out(line({{"signal", "end"},
                        {"device", camera.device.nDeviceID},
                        {"type", type},
                        {"path", path.toStdString()}}));
}

} // namespace companion
