#include "iefeatures/running/SignalPrinter.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/console/JsonLine.h"

namespace companion
{

void SignalPrinter::begin(const ListedCamera& camera, unsigned type)
{
    tell("begin", camera, {{"type", type}});
}

void SignalPrinter::info(const ListedCamera& camera, const QString& message, bool isFailure)
{
    tell("info", camera, {{"failed", isFailure}, {"message", json(message)}});
}

void SignalPrinter::end(const ListedCamera& camera, unsigned type, const QString&)
{
    tell("end", camera, {{"type", type}});
}

void SignalPrinter::tell(const char* signal, const ListedCamera& camera, const Json& fields)
{
    Json object = {{"signal", signal}, {"camera", cameraJson(camera)}};
    object.update(fields);
    m_console.object("signal", object);
}

} // namespace companion
