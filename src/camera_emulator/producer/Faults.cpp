#include "camera_emulator/producer/Faults.h"

#include "camera_emulator/producer/OwnFile.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>

namespace producer
{

namespace
{

constexpr size_t kLeak = 64 << 20;
constexpr std::chrono::milliseconds kSlow{50};

// Of the file that this code was loaded from, without its ending.
std::string ownName()
{
    const std::string path = ownFile();
    const std::string file = path.substr(path.find_last_of("/\\") + 1);
    return file.substr(0, file.rfind('.'));
}

struct Rule
{
    std::string kind;
    unsigned long from = 1; // which call
};

using Rules = std::map<std::string, Rule>; // by function

const Rules& rules()
{
    static const Rules* const all = [] {
        auto* const parsed = new Rules;
        for (const std::string& text : settings("CAMERA_EMULATOR_GENTL_FAULTS")) {
            const size_t equals = text.find('=');
            if (equals == std::string::npos)
                continue;
            const size_t at = text.find('@', equals);
            Rule rule{text.substr(equals + 1, at == std::string::npos ? at : at - equals - 1), 1};
            if (at != std::string::npos)
                rule.from = std::strtoul(text.c_str() + at + 1, nullptr, 10);
            (*parsed)[text.substr(0, equals)] = rule;
        }
        return parsed;
    }();
    return *all;
}

unsigned long countCall(const std::string& function)
{
    static auto* const mutex = new std::mutex;
    static auto* const calls = new std::map<std::string, unsigned long>;
    const std::lock_guard lock(*mutex);
    return ++(*calls)[function];
}

[[noreturn]] void hang()
{
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

void leak()
{
    static auto* const lost = new std::vector<void*>;
    void* const memory = std::malloc(kLeak);
    if (memory)
        std::memset(memory, 1, kLeak);
    lost->push_back(memory);
}

} // namespace

std::vector<std::string> settings(const char* variable)
{
    const char* setting = std::getenv(variable);
    std::istringstream parts(setting ? setting : "");
    const std::string prefix = ownName() + ":";
    std::vector<std::string> mine;
    for (std::string part; std::getline(parts, part, ',');) {
        const size_t colon = part.find(':');
        if (part.compare(0, prefix.size(), prefix) == 0)
            mine.push_back(part.substr(prefix.size()));
        else if (colon == std::string::npos && !part.empty())
            mine.push_back(part);
    }
    return mine;
}

Fault enter(const char* function)
{
    const auto rule = rules().find(function);
    if (rule == rules().end() || countCall(function) < rule->second.from)
        return {};
    const std::string& kind = rule->second.kind;
    if (kind == "crash")
        ::raise(SIGSEGV);
    else if (kind == "hang")
        hang();
    else if (kind == "slow")
        std::this_thread::sleep_for(kSlow);
    else if (kind == "leak")
        leak();
    else if (kind == "long")
        return {gentl::Success, true};
    else
        return {static_cast<gentl::Error>(std::strtol(kind.c_str(), nullptr, 10)), false};
    return {};
}

} // namespace producer
