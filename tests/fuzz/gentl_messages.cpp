// Messages between the camera library and its helper process: nothing that comes in is believed. And the
// settings file for producers.
#include "KXCameraControl/ports/gentl/GenTlSettings.h"
#include "fuzz/Fuzz.h"
#include "gentl/Message.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::Input kinds(data, size);
    const gentl::Bytes message(data, data + size);
    gentl::Reader reader(message);
    for (size_t i = 0; i < 64; ++i) {
        switch (kinds.byte() % 5) {
        case 0:
            reader.u32();
            break;
        case 1:
            reader.i32();
            break;
        case 2:
            reader.u64();
            break;
        case 3:
            fuzz::promise(reader.text().size() <= gentl::kMaxText, "a text is bounded");
            break;
        default:
            fuzz::promise(reader.block().size() <= gentl::kMaxBlock, "a block is bounded");
        }
        if (!reader.isGood())
            fuzz::promise(reader.u64() == 0 && reader.text().empty(), "behind the end all is empty");
    }
    std::vector<std::string> problems;
    kx::parseSettings(std::string(message.begin(), message.end()), problems);
    return 0;
}
