// Passes over a bag's entries, and the file.
#include "KXCameraControl/bag/BagLoader.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <system_error>

namespace kx
{
namespace
{

namespace fs = std::filesystem;

constexpr size_t kMaxFileSize = 64u << 20;

constexpr size_t kMostOfAText = 1000; // that a message repeats

std::string shortened(const std::string& text)
{
    return text.size() <= kMostOfAText ? text : text.substr(0, kMostOfAText) + "...";
}

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

// Selectors that did not take their value, and what they select. Asks for the camera's selectors when there
// is a first one: entries of names that nobody knows cost nothing.
class UnsetSelectors
{
public:
    explicit UnsetSelectors(BagNodes& nodes) : m_nodes(nodes) {}

    void clear() { m_unset.clear(); }
    void note(const std::string& feature, bool isSet)
    {
        if (isSet)
            m_unset.erase(feature);
        else if (index(); m_selectors.count(feature) > 0)
            m_unset.insert(feature);
    }
    // The first one in the order of names, or null.
    const std::string* of(const std::string& feature) const
    {
        const auto selectors = m_selectorsOf.find(feature);
        if (m_unset.empty() || selectors == m_selectorsOf.end())
            return nullptr;
        const bool isFewer = m_unset.size() < selectors->second.size();
        const std::set<std::string>& few = isFewer ? m_unset : selectors->second;
        const std::set<std::string>& many = isFewer ? selectors->second : m_unset;
        const auto found = std::find_if(few.begin(), few.end(),
                                        [&](const std::string& name) { return many.count(name) > 0; });
        return found == few.end() ? nullptr : &*found;
    }

private:
    void index()
    {
        if (m_isIndexed)
            return;
        m_isIndexed = true;
        for (const std::string& selector : m_nodes.selectors()) {
            m_selectors.insert(selector);
            for (const std::string& selected : m_nodes.selectedFeatures(selector))
                m_selectorsOf[selected].insert(selector);
        }
    }

    BagNodes& m_nodes;
    bool m_isIndexed = false;
    std::set<std::string> m_selectors;
    std::map<std::string, std::set<std::string>> m_selectorsOf;
    std::set<std::string> m_unset;
};

class Loader
{
public:
    Loader(BagNodes& nodes, const std::vector<BagEntry>& entries)
        : m_nodes(nodes), m_entries(entries), m_unset(nodes), m_results(entries.size(), Result::Untried)
    {}

    // One pass over all entries, which ends where the line fails; that failure, or KX_OK.
    KX_Status pass(BagLoadReport& report)
    {
        KX_Status lineStatus = KX_OK;
        m_unset.clear();
        for (size_t i = 0; i < m_entries.size() && lineStatus == KX_OK; ++i) {
            Failure failure{m_entries[i].name, m_entries[i].value, KX_OK, {}};
            apply(m_entries[i], failure);
            if (KX_IS_LINE_FAILURE(failure.status))
                lineStatus = failure.status;
            m_results[i] = failure.status == KX_OK ? Result::Taken : Result::Failed;
            m_failures.erase(i);
            if (failure.status != KX_OK)
                keep(i, std::move(failure));
        }
        sumUp(report);
        return lineStatus;
    }

private:
    using Failure = BagLoadReport::Failure;
    enum class Result : char // of an entry's last try
    {
        Untried,
        Taken,
        Failed
    };

    // Of very many the first ones.
    void keep(size_t entry, Failure failure)
    {
        m_failures.emplace(entry, std::move(failure));
        if (m_failures.size() > BagLoadReport::mostFailures)
            m_failures.erase(std::prev(m_failures.end()));
    }

    void sumUp(BagLoadReport& report) const
    {
        const auto count = [this](Result wanted) {
            return static_cast<size_t>(std::count(m_results.begin(), m_results.end(), wanted));
        };
        report.untried = count(Result::Untried);
        report.failed = count(Result::Failed);
        report.failures.clear();
        for (const auto& [entry, failure] : m_failures)
            report.failures.push_back(failure);
    }

    void apply(const BagEntry& entry, Failure& failure)
    {
        for (const auto& [selector, value] : entry.selectors) {
            failure.status = write(selector, value);
            if (failure.status != KX_OK) {
                failure.reason = "its selector " + selector + " cannot be set to " + value;
                return;
            }
        }
        // Written under a selector that did not take its value, it would land on another channel.
        if (const std::string* selector = m_unset.of(entry.name)) {
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
        m_unset.note(name, status == KX_OK);
        return status;
    }

    BagNodes& m_nodes;
    const std::vector<BagEntry>& m_entries;
    UnsetSelectors m_unset;
    std::vector<Result> m_results;
    std::map<size_t, Failure> m_failures; // by the entry
};

KX_Status readFile(const std::string& path, std::string& text, std::string& message)
{
    const fs::path name = fs::u8path(path);
    std::error_code problem;
    const bool isFile = fs::is_regular_file(name, problem);
    const uintmax_t size = isFile ? fs::file_size(name, problem) : 0;
    if (!isFile || problem) {
        message = "The feature file " + path +
                  " cannot be opened: " + (problem ? problem.message() : std::string("it is no file"));
        return KX_E_FILE;
    }
    if (size > kMaxFileSize) {
        message = "The feature file " + path + " is larger than 64 MiB.";
        return KX_E_FILE_FORMAT;
    }
    std::ifstream file(name, std::ios::binary);
    text.resize(static_cast<size_t>(size));
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<size_t>(file.gcount())); // where it has become shorter meanwhile
    if (file.is_open() && !file.bad())
        return KX_OK;
    message = "The feature file " + path + " cannot be read.";
    return KX_E_FILE;
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
        if (report.failed >= before)
            break;
        before = report.failed;
    } while (report.failed > 0);

    const KX_Status end = bracket.finish();
    if (KX_IS_LINE_FAILURE(end))
        return end;
    if (nodes.exists("DeviceRegistersValid"))
        nodes.readText("DeviceRegistersValid", report.registersValid);
    return report.failed == 0 ? KX_OK : KX_E_INCOMPLETE;
}

std::string BagLoadReport::text() const
{
    std::string out = std::to_string(entries - failed - untried) + " of " + std::to_string(entries) +
                      " entries took their value in " + std::to_string(passes) +
                      (passes == 1 ? " pass." : " passes.");
    if (untried > 0)
        out += " The last " + std::to_string(untried) + (untried == 1 ? " was" : " were") + " not tried.";
    if (registersValid == "0")
        out += " The camera says that its registers are not valid together.";
    for (const Failure& failure : failures)
        out += "\n" + shortened(failure.name) + " = " + shortened(failure.value) + ": " + failure.reason;
    if (failed > failures.size())
        out += "\nand " + std::to_string(failed - failures.size()) + " more";
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
    std::string().swap(text);
    BagLoadReport report;
    const KX_Status status = applyBag(nodes, entries, report);
    message = report.text();
    return status;
}

} // namespace kx
