// Passes over a bag's entries, and the file.
#include "KXCameraControl/bag/BagLoader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <sys/stat.h>

namespace kx
{
namespace
{

constexpr size_t kMaxFileSize = 64u << 20;

// Brackets a load with the commands that tell a camera to hold its checks until all is in (SFNC, "Device
// Control").
class StreamingBracket
{
public:
    explicit StreamingBracket(BagNodes& nodes) : m_nodes(nodes)
    {
        static const std::pair<const char*, const char*> commands[] = {
            {"DeviceRegistersStreamingStart", "DeviceRegistersStreamingEnd"},
            {"DeviceFeaturePersistenceStart", "DeviceFeaturePersistenceEnd"}};
        for (const auto& [start, end] : commands) {
            if (m_nodes.exists(start) && m_nodes.execute(start) == KX_OK) {
                m_end = end;
                return;
            }
        }
    }
    ~StreamingBracket() { finish(); }

    KX_Status finish()
    {
        if (m_end.empty())
            return KX_OK;
        const std::string end = std::exchange(m_end, {});
        return m_nodes.execute(end);
    }

private:
    BagNodes& m_nodes;
    std::string m_end;
};

class Loader
{
public:
    Loader(BagNodes& nodes, const std::vector<BagEntry>& entries)
        : m_nodes(nodes), m_entries(entries), m_results(entries.size())
    {}

    // One pass over all entries, which ends where the line fails; that failure, or KX_OK.
    KX_Status pass(BagLoadReport& report)
    {
        KX_Status lineStatus = KX_OK;
        m_unset.clear();
        for (size_t i = 0; i < m_entries.size() && lineStatus == KX_OK; ++i) {
            m_results[i] = BagLoadReport::Failure{m_entries[i].name, m_entries[i].value, KX_OK, {}};
            apply(m_entries[i], *m_results[i]);
            if (KX_IS_LINE_FAILURE(m_results[i]->status))
                lineStatus = m_results[i]->status;
        }
        sumUp(report);
        return lineStatus;
    }

private:
    void sumUp(BagLoadReport& report) const
    {
        report.failures.clear();
        report.untried = 0;
        for (const auto& result : m_results) {
            if (!result)
                ++report.untried;
            else if (result->status != KX_OK)
                report.failures.push_back(*result);
        }
    }

    void apply(const BagEntry& entry, BagLoadReport::Failure& failure)
    {
        for (const auto& [selector, value] : entry.selectors) {
            failure.status = write(selector, value);
            if (failure.status != KX_OK) {
                failure.reason = "its selector " + selector + " cannot be set to " + value;
                return;
            }
        }
        // Written under a selector that did not take its value, it would land on another channel.
        if (const std::string* selector = unsetSelectorOf(entry.name)) {
            failure.status = KX_E_GC_ACCESS;
            failure.reason = "its selector " + *selector + " did not take its value";
            return;
        }
        failure.status = write(entry.name, entry.value);
        if (failure.status != KX_OK)
            failure.reason = KX_CC_StatusText(failure.status);
    }

    KX_Status write(const std::string& name, const std::string& value)
    {
        std::string now;
        KX_Status status = m_nodes.readText(name, now);
        if (status != KX_OK || now != value)
            status = KX_IS_LINE_FAILURE(status) ? status : m_nodes.writeText(name, value);
        if (status == KX_OK)
            m_unset.erase(name);
        else
            m_unset.insert(name);
        return status;
    }

    const std::string* unsetSelectorOf(const std::string& feature)
    {
        for (const std::string& name : m_unset) {
            const std::vector<std::string>& selected = selectedBy(name);
            if (std::find(selected.begin(), selected.end(), feature) != selected.end())
                return &name;
        }
        return nullptr;
    }

    const std::vector<std::string>& selectedBy(const std::string& selector)
    {
        const auto [found, inserted] = m_selected.try_emplace(selector);
        if (inserted)
            found->second = m_nodes.selectedFeatures(selector);
        return found->second;
    }

    BagNodes& m_nodes;
    const std::vector<BagEntry>& m_entries;
    std::set<std::string> m_unset;
    std::map<std::string, std::vector<std::string>> m_selected;
    std::vector<std::optional<BagLoadReport::Failure>> m_results; // of each entry's last try
};

KX_Status readFile(const std::string& path, std::string& text, std::string& message)
{
    struct stat about;
    if (stat(path.c_str(), &about) != 0) {
        message = "The feature file " + path + " cannot be opened: " + std::strerror(errno);
        return KX_E_FILE;
    }
    if (!S_ISREG(about.st_mode)) {
        message = "The feature file " + path + " cannot be opened: it is no file";
        return KX_E_FILE;
    }
    if (static_cast<size_t>(about.st_size) > kMaxFileSize) {
        message = "The feature file " + path + " is larger than 64 MiB.";
        return KX_E_FILE_FORMAT;
    }
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    if (!file) {
        message = "The feature file " + path + " cannot be read.";
        return KX_E_FILE;
    }
    text = content.str();
    return KX_OK;
}

} // namespace

KX_Status applyBag(BagNodes& nodes, const std::vector<BagEntry>& entries, BagLoadReport& report)
{
    report.entries = entries.size();
    StreamingBracket bracket(nodes);
    Loader loader(nodes, entries);
    size_t before = entries.size() + 1;
    do {
        ++report.passes;
        if (const KX_Status status = loader.pass(report))
            return status;
        if (report.failures.size() >= before)
            break;
        before = report.failures.size();
    } while (!report.failures.empty());

    const KX_Status end = bracket.finish();
    if (KX_IS_LINE_FAILURE(end))
        return end;
    if (nodes.exists("DeviceRegistersValid"))
        nodes.readText("DeviceRegistersValid", report.registersValid);
    return report.failures.empty() ? KX_OK : KX_E_INCOMPLETE;
}

std::string BagLoadReport::text() const
{
    std::string out = std::to_string(entries - failures.size() - untried) + " of " + std::to_string(entries) +
                      " entries took their value in " + std::to_string(passes) +
                      (passes == 1 ? " pass." : " passes.");
    if (untried > 0)
        out += " The last " + std::to_string(untried) + (untried == 1 ? " was" : " were") + " not tried.";
    if (registersValid == "0")
        out += " The camera says that its registers are not valid together.";
    for (const Failure& failure : failures)
        out += "\n" + failure.name + " = " + failure.value + ": " + failure.reason;
    return out;
}

KX_Status loadBag(BagNodes& nodes, const std::string& path, std::string& message)
{
    std::string text;
    const KX_Status read = readFile(path, text, message);
    if (read != KX_OK)
        return read;
    std::vector<BagEntry> entries;
    std::string error;
    if (!parseBag(text, entries, error)) {
        message = "The feature file " + path + " cannot be used: " + error + ".";
        return KX_E_FILE_FORMAT;
    }
    BagLoadReport report;
    const KX_Status status = applyBag(nodes, entries, report);
    message = report.text();
    return status;
}

} // namespace kx
