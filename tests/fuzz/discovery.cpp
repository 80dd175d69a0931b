// Answers of cameras that nobody has seen before, each behind its length, through the list's text and JSON,
// the names of files, and what --watch tells.
#include "KXCameraControl/ports/gige/DiscoveryAnswers.h"
#include "fuzz/Scripted.h"

#include "iefeatures/cameras/FileNaming.h"
#include "iefeatures/cameras/ListReport.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"

#include <algorithm>
#include <set>

namespace
{

using namespace companion;

void checkText(const QString& text, int lines)
{
    for (const uint character : text.toUcs4())
        fuzz::promise(character == '\n' || !actsOnTerminal(character), "nothing acts on a terminal");
    fuzz::promise(text.count('\n') == lines, "a camera has a line");
}

void checkJson(const Json& fields)
{
    const std::string line = jsonLine("list", "camera", fields);
    fuzz::promise(line.find('\n') == line.size() - 1, "an object is one line");
    fuzz::promise(Json::parse(line, nullptr, false).is_object(), "an object is JSON");
}

void checkFileName(const ListedCamera& camera, FileNaming naming)
{
    if (!fileNameProblem(camera, naming).isEmpty())
        return;
    const QString name = fileNameOf(camera, naming);
    fuzz::promise(!name.contains('/') && name != "." && name != ".." && !name.contains(QChar(0)),
                  "a file lies in its folder");
}

// The same in the fields that the other two transports have.
void addOtherTransports(std::vector<KX_DeviceEntry>& entries, const gvcp::Bytes& packet)
{
    for (const uint32_t transport : {KX_TRANSPORT_USB3, KX_TRANSPORT_CAMERA_LINK}) {
        KX_DeviceEntry entry = entries.front();
        entry.info.transportType = transport;
        std::copy_n(packet.begin(), std::min(packet.size(), sizeof entry.info.special),
                    reinterpret_cast<uint8_t*>(&entry.info.special));
        entries.push_back(entry);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::prepareQt();
    fuzz::Input input(data, size);
    std::vector<KX_DeviceEntry> entries;
    while (!input.isAtEnd() && entries.size() < 8) {
        gvcp::Bytes packet = input.bytes(input.byte() + 1u);
        gvcp::AckPacket ack{gvcp::Success, gvcp::DiscoveryAck, 1, packet};
        ack.payload.resize(gvcp::kDiscoverySize);
        const auto entry = kx::entryFrom(ack, 1, 0x7F000001, {"eth0", 0x7F000002, 0xFF000000});
        fuzz::promise(entry.has_value(), "an answer of the right size is one");
        entries.push_back(*entry);
        addOtherTransports(entries, packet);
    }
    const std::vector<ListedCamera> cameras = camerasFrom(entries);
    checkText(listText(cameras), static_cast<int>(cameras.size()) + 1);
    std::set<std::string> objects;
    for (const ListedCamera& camera : cameras) {
        checkJson(listedJson(camera));
        objects.insert(lineOf(listedJson(camera)));
        checkText(camera.title(), 0);
        for (const FileNaming naming :
             {FileNaming::ModelAndSerial, FileNaming::Serial, FileNaming::Name, FileNaming::Address})
            checkFileName(camera, naming);
    }
    fuzz::promise(objects.size() == cameras.size(), "no two cameras look alike");
    LineWatch watch;
    for (const auto& look : {cameras, std::vector<ListedCamera>(), std::vector<ListedCamera>()})
        for (const CameraEvent& event : watch.look(look)) {
            checkText(eventText(event, QDateTime::fromMSecsSinceEpoch(0)), 1);
            checkJson(eventJson(event, QDateTime::fromMSecsSinceEpoch(0)));
        }
    return 0;
}
