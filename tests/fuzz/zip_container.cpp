// What a camera holds as its description: an archive or a text, unpacked within bounds.
#include "KXCameraControl/description/Description.h"
#include "KXCameraControl/description/Evidence.h"
#include "KXCameraControl/description/Unzip.h"
#include "fuzz/Fuzz.h"

namespace
{

unsigned counted()
{
    static unsigned last = 0;
    return last += 12345;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string memory(reinterpret_cast<const char*>(data), size);
    size_t begin = 0;
    size_t end = 0;
    if (kx::archiveDirectory(memory, begin, end))
        fuzz::promise(begin < end && end <= memory.size(), "an archive's directory lies in it");
    for (const bool isCalledZip : {false, true}) {
        std::string problem;
        const kx::SharedDescription description = kx::descriptionIn(memory, isCalledZip, problem);
        fuzz::promise(description || !problem.empty(), "where no text comes, it is said why");
        if (!description)
            continue;
        fuzz::promise(description->text().size() <= kx::maximumFetchedBytes, "a text is bounded");
        fuzz::promise(description->text().find('\0') == std::string::npos, "a text ends at its first zero");
        fuzz::promise(description->memory() == memory, "what was there is kept");
    }
    if (const auto blocks = kx::evidenceOf(memory, counted)) {
        for (size_t i = 0; i < blocks->size(); ++i)
            fuzz::promise((*blocks)[i] * kx::evidenceBlock < memory.size() &&
                              (i == 0 || (*blocks)[i - 1] < (*blocks)[i]),
                          "blocks lie in the description, ascending");
    }
    return 0;
}
