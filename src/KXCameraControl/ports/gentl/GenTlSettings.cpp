#include "KXCameraControl/ports/gentl/GenTlSettings.h"

#include "KXCameraControl/ports/gentl/GenTlPort.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

namespace kx
{

using namespace gentl;

namespace
{

constexpr size_t kLargestFile = 1 << 20;

std::atomic<ModuleSetter> moduleSetter{nullptr};

struct Problems
{
    std::mutex mutex;
    std::map<std::string, std::vector<std::string>> byProducer;
};

// Never destroyed: threads may outlive main.
Problems& lastProblems()
{
    static auto* const instance = new Problems;
    return *instance;
}

std::string trimmed(const std::string& text)
{
    const char* blanks = " \t\r";
    const size_t first = text.find_first_not_of(blanks);
    return first == std::string::npos ? std::string()
                                      : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string inLine(size_t line, const std::string& what)
{
    return "KX_GENTL_SETTINGS, line " + std::to_string(line) + ": " + what;
}

ModuleSettings moduleOf(const std::string& head)
{
    ModuleSettings module;
    const size_t slash = head.find('/');
    module.producer = trimmed(head.substr(0, slash));
    if (slash != std::string::npos)
        module.interface = trimmed(head.substr(slash + 1));
    return module;
}

std::vector<ModuleSettings> readSettings(std::vector<std::string>& problems)
{
    const char* path = std::getenv("KX_GENTL_SETTINGS");
    if (!path || !*path)
        return {};
    std::ifstream file(path, std::ios::binary);
    const bool wasOpen = file.is_open();
    std::string text;
    for (char c = 0; text.size() <= kLargestFile && file.get(c);)
        text += c;
    if (!wasOpen || text.size() > kLargestFile) {
        problems.push_back(std::string("KX_GENTL_SETTINGS: ") + path + " cannot be read.");
        return {};
    }
    return parseSettings(text, problems);
}

Writer request(Request what)
{
    return Writer().u32(static_cast<uint32_t>(what));
}

void configureModule(const std::string& producer, const std::string& interface,
                     const ModuleSettings& settings, std::vector<std::string>& problems)
{
    const std::string module =
        interface.empty() ? "the system of " + producer : "interface \"" + interface + "\" of " + producer;
    HostReply reply;
    auto link = HostLink::open(producer, nullptr, reply);
    GenTlPort port(KX_DeviceInfo{});
    if (!link || port.openModule(std::move(link), interface) != KX_OK) {
        problems.push_back(inLine(settings.features.front().line, module + " cannot be opened: ") +
                           (reply.text.empty() ? port.lastError() : reply.text));
        return;
    }
    const ModuleSetter setter = moduleSetter;
    for (const std::string& problem :
         setter ? setter(port, settings.features) : std::vector<std::string>{"nobody sets features"})
        problems.push_back("KX_GENTL_SETTINGS, " + module + ", " + problem);
}

void configure(HostLink& link, std::vector<std::string>& problems)
{
    const std::string& producer = link.producer();
    const std::string file = producer.substr(producer.find_last_of('/') + 1);
    for (const ModuleSettings& settings : readSettings(problems)) {
        if (settings.producer != file || settings.features.empty())
            continue;
        if (!settings.interface) {
            configureModule(producer, {}, settings, problems);
            continue;
        }
        bool isThere = false;
        for (const Bytes& item : link.request(request(Request::Interfaces)).items) {
            const std::string id = Reader(item).text();
            if (*settings.interface != "*" && *settings.interface != id)
                continue;
            isThere = true;
            configureModule(producer, id, settings, problems);
        }
        if (!isThere && *settings.interface != "*")
            problems.push_back(inLine(settings.features.front().line,
                                      producer + " has no interface \"" + *settings.interface + "\"."));
    }
}

} // namespace

void setModuleSetter(ModuleSetter setter)
{
    moduleSetter = setter;
}

std::vector<ModuleSettings> parseSettings(const std::string& text, std::vector<std::string>& problems)
{
    std::vector<ModuleSettings> all;
    std::istringstream lines(text);
    size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        line = trimmed(line);
        if (line.empty() || line[0] == '#')
            continue;
        const size_t equals = line.find('=');
        const std::string name = trimmed(line.substr(0, equals));
        if (line.front() == '[' && line.back() == ']')
            all.push_back(moduleOf(line.substr(1, line.size() - 2)));
        else if (all.empty() || name.empty() || name.find_first_of(" \t[]") != std::string::npos)
            problems.push_back(inLine(number, all.empty() ? "there is no [producer] before it."
                                                          : "this is no feature and no [producer]."));
        else if (equals == std::string::npos)
            all.back().features.push_back({number, name, std::nullopt});
        else
            all.back().features.push_back({number, name, trimmed(line.substr(equals + 1))});
    }
    return all;
}

std::unique_ptr<HostLink> openConfigured(const std::string& producer, Channel* loss, HostReply& reply)
{
    auto link = HostLink::open(producer, loss, reply);
    if (!link)
        return nullptr;
    link->configureOnce([&] {
        std::vector<std::string> problems;
        configure(*link, problems);
        Problems& all = lastProblems();
        const std::lock_guard lock(all.mutex);
        all.byProducer[producer] = problems;
    });
    return link;
}

std::vector<std::string> settingsProblems(const std::string& producer)
{
    Problems& all = lastProblems();
    const std::lock_guard lock(all.mutex);
    const auto found = all.byProducer.find(producer);
    return found == all.byProducer.end() ? std::vector<std::string>() : found->second;
}

} // namespace kx
