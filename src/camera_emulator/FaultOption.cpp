#include "camera_emulator/Options.h"

#include <functional>
#include <map>

namespace emu
{
namespace
{

using Numbers = std::vector<unsigned long>;

// "12", "0x1F" and "always", separated by colons; nothing when a part is something else.
std::optional<Numbers> numbers(const std::string& text)
{
    Numbers result;
    for (size_t begin = 0; begin <= text.size() && !text.empty();) {
        const size_t end = std::min(text.find(':', begin), text.size());
        const std::string part = text.substr(begin, end - begin);
        if (part == "always") {
            result.push_back(kAlways);
        } else {
            const bool hexadecimal = part.compare(0, 2, "0x") == 0;
            const char* digits = hexadecimal ? "0123456789abcdefABCDEFx" : "0123456789";
            if (part.empty() || part.size() > 10 || part.find_first_not_of(digits) != std::string::npos)
                return std::nullopt;
            char* rest = nullptr;
            result.push_back(std::strtoul(part.c_str(), &rest, hexadecimal ? 16 : 10));
            if (*rest != 0 || result.back() > 0xFFFFFFFF)
                return std::nullopt;
        }
        begin = end + 1;
    }
    return result;
}

struct FaultKind
{
    const char* form; // what a person has to write behind the "="
    size_t least;     // numbers
    size_t most;
    std::function<void(const Numbers&, CameraOptions&)> apply;
};

unsigned at(const Numbers& given, size_t index, unsigned otherwise)
{
    return index < given.size() ? static_cast<unsigned>(given[index]) : otherwise;
}

const std::map<std::string, FaultKind>& kinds()
{
    using std::chrono::milliseconds;
    static const std::map<std::string, FaultKind> table{
        {"lose",
         {"N", 1, 1, [](const Numbers& n, CameraOptions& c) { c.faults.loseRequests = at(n, 0, 0); }}},
        {"lose-answers",
         {"N", 1, 1, [](const Numbers& n, CameraOptions& c) { c.faults.loseAnswers = at(n, 0, 0); }}},
        {"delay",
         {"MS", 1, 1,
          [](const Numbers& n, CameraOptions& c) { c.faults.delay = milliseconds(at(n, 0, 0)); }}},
        {"silent",
         {"[AFTER[:MS]]", 0, 2,
          [](const Numbers& n, CameraOptions& c) {
              c.faults.silence = Silence{at(n, 0, 0), std::nullopt};
              if (n.size() == 2)
                  c.faults.silence->duration = milliseconds(at(n, 1, 0));
          }}},
        {"discovery-only",
         {"", 0, 0, [](const Numbers&, CameraOptions& c) { c.faults.discoveryOnly = true; }}},
        {"refuse-concatenation",
         {"", 0, 0, [](const Numbers&, CameraOptions& c) { c.faults.refuseConcatenation = true; }}},
        {"no-concatenation",
         {"", 0, 0, [](const Numbers&, CameraOptions& c) { c.config.concatenation = false; }}},
        {"refuse",
         {"ADDRESS[:STATUS[:LENGTH]]", 1, 3,
          [](const Numbers& n, CameraOptions& c) {
              const unsigned status = at(n, 1, gvcp::InvalidAddress);
              c.faults.refusals.push_back({at(n, 0, 0), at(n, 2, 4), static_cast<uint16_t>(status)});
          }}},
        {"forget",
         {"ADDRESS", 1, 1,
          [](const Numbers& n, CameraOptions& c) { c.faults.unsaved.push_back(at(n, 0, 0)); }}},
        {"busy", {"N", 1, 1, [](const Numbers& n, CameraOptions& c) { c.faults.busy = at(n, 0, 0); }}},
        {"pending",
         {"MS[:N]", 1, 2,
          [](const Numbers& n, CameraOptions& c) {
              c.faults.pendingTime = milliseconds(at(n, 0, 0));
              c.faults.pending = at(n, 1, kAlways);
          }}},
        {"steal",
         {"AFTER", 1, 1,
          [](const Numbers& n, CameraOptions& c) { c.faults.stealControlAfter = at(n, 0, 0); }}},
        {"cut-description",
         {"BYTES", 1, 1,
          [](const Numbers& n, CameraOptions& c) { c.config.descriptionLimit = at(n, 0, 0); }}},
    };
    return table;
}

} // namespace

std::string parseFault(const std::string& text, CameraOptions& camera)
{
    const size_t equals = text.find('=');
    const auto kind = kinds().find(text.substr(0, equals));
    if (kind == kinds().end()) {
        std::string known;
        for (const auto& [name, other] : kinds())
            known += (known.empty() ? "" : ", ") + name;
        return "There is no fault \"" + text + "\". Known: " + known + ".";
    }
    const auto given = numbers(equals == std::string::npos ? "" : text.substr(equals + 1));
    if (!given || given->size() < kind->second.least || given->size() > kind->second.most) {
        const std::string form = kind->second.form;
        return "Write the fault as " + kind->first + (form.empty() ? form : "=" + form) + ", not \"" + text +
               "\".";
    }
    kind->second.apply(*given, camera);
    return {};
}

} // namespace emu
