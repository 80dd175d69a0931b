#include "KXCameraControl/bag/FeatureBag.h"

#include <algorithm>
#include <map>
#include <set>

namespace kx
{
namespace
{

// A selector with more values than this (a look-up table's index, say) is not enumerated: its features are
// saved for the value it has.
constexpr size_t kMaxSelectorValues = 65536;
// Combinations of one group of selectors; more are cut down to the combination that is set.
constexpr size_t kMaxCombinations = 262144;

bool isReadable(KX_XML_AccessMode mode)
{
    return mode == KX_AM_READ_ONLY || mode == KX_AM_READ_WRITE;
}

bool fitsOnALine(const std::string& text)
{
    return text.find_first_of(std::string("\n\r\0", 3)) == std::string::npos;
}

using Selectors = std::vector<std::string>; // outermost first

// The selectors of every feature: a selector that is itself selected stands behind its own selectors.
class SelectorTree
{
public:
    explicit SelectorTree(BagNodes& nodes)
    {
        for (const std::string& selector : nodes.selectors()) {
            m_isSelector.insert(selector);
            for (const std::string& selected : nodes.selectedFeatures(selector))
                m_selectorsOf[selected].insert(selector);
        }
    }

    Selectors selectorsOf(const std::string& feature) const
    {
        Selectors order;
        std::set<std::string> visited{feature};
        collect(feature, visited, order);
        return order;
    }

    bool isSelector(const std::string& feature) const { return m_isSelector.count(feature) > 0; }

private:
    void collect(const std::string& feature, std::set<std::string>& visited, Selectors& order) const
    {
        const auto found = m_selectorsOf.find(feature);
        if (found == m_selectorsOf.end())
            return;
        for (const std::string& selector : found->second) {
            if (!visited.insert(selector).second)
                continue; // a circle of selectors: each is taken once
            collect(selector, visited, order);
            order.push_back(selector);
        }
    }

    std::map<std::string, std::set<std::string>> m_selectorsOf;
    std::set<std::string> m_isSelector;
};

class Collector
{
public:
    Collector(BagNodes& nodes, std::vector<BagEntry>& entries) : m_nodes(nodes), m_entries(entries) {}

    KX_Status collect()
    {
        const std::vector<std::string> features = m_nodes.streamableFeatures();
        const SelectorTree tree(m_nodes);
        std::map<Selectors, std::vector<std::string>> groups;
        for (const std::string& feature : features) {
            const Selectors selectors = tree.selectorsOf(feature);
            if (selectors.empty() && !tree.isSelector(feature))
                take(feature);
            else if (!selectors.empty())
                groups[selectors].push_back(feature);
        }
        for (const auto& [selectors, selected] : groups)
            takeGroup(selectors, selected);
        // Selectors themselves come last, as they were found: loading leaves them so.
        for (const std::string& feature : features)
            if (tree.isSelector(feature) && tree.selectorsOf(feature).empty())
                take(feature);
        return m_status;
    }

    const std::string& remark() const { return m_remark; }

private:
    bool lineFailed() const { return m_status != KX_OK; }

    bool note(KX_Status status)
    {
        if (KX_IS_LINE_FAILURE(status) && m_status == KX_OK)
            m_status = status;
        return status == KX_OK;
    }

    bool take(const std::string& feature)
    {
        KX_XML_AccessMode mode = KX_AM_NOT_IMPLEMENTED;
        if (lineFailed() || !note(m_nodes.accessMode(feature, mode)) || mode != KX_AM_READ_WRITE)
            return false;
        std::string text;
        if (!note(m_nodes.readText(feature, text)) || !fitsOnALine(text))
            return false;
        m_entries.push_back({feature, {}, text});
        return true;
    }

    void takeGroup(const Selectors& selectors, const std::vector<std::string>& features)
    {
        std::vector<std::pair<std::string, std::string>> originals;
        for (const std::string& selector : selectors) {
            KX_XML_AccessMode mode = KX_AM_NOT_IMPLEMENTED;
            std::string text;
            if (lineFailed() || !note(m_nodes.accessMode(selector, mode)))
                return;
            if (isReadable(mode) && note(m_nodes.readText(selector, text)))
                originals.emplace_back(selector, text);
        }
        const size_t begin = m_entries.size();
        size_t combinations = 0;
        descend(selectors, 0, features, combinations);
        restore(originals, begin);
    }

    // Sets the selectors from the `depth`th on to each of their values in turn.
    void descend(const Selectors& selectors, size_t depth, const std::vector<std::string>& features,
                 size_t& combinations)
    {
        if (lineFailed() || combinations >= kMaxCombinations)
            return;
        if (depth == selectors.size()) {
            ++combinations;
            takeCombination(selectors, features);
            return;
        }
        const std::string& selector = selectors[depth];
        const std::vector<std::string> values = m_nodes.selectorValues(selector, kMaxSelectorValues);
        KX_XML_AccessMode mode = KX_AM_NOT_IMPLEMENTED;
        if (!note(m_nodes.accessMode(selector, mode)))
            return;
        if (values.empty() || mode != KX_AM_READ_WRITE) {
            descend(selectors, depth + 1, features, combinations);
            return;
        }
        for (const std::string& value : values)
            if (!lineFailed() && note(m_nodes.writeText(selector, value)))
                descend(selectors, depth + 1, features, combinations);
    }

    void takeCombination(const Selectors& selectors, const std::vector<std::string>& features)
    {
        const size_t begin = m_entries.size();
        for (const std::string& selector : selectors)
            take(selector);
        const size_t behindSelectors = m_entries.size();
        for (const std::string& feature : features)
            take(feature);
        if (m_entries.size() == behindSelectors)
            m_entries.resize(begin); // nothing here is writable: the selectors' lines say nothing
    }

    // On the camera, and behind what the group wrote (from `begin` on), so that loading ends there too.
    void restore(const std::vector<std::pair<std::string, std::string>>& originals, size_t begin)
    {
        const size_t end = m_entries.size();
        for (const auto& [selector, text] : originals) {
            const auto isItsLine = [&name = selector](const BagEntry& entry) { return entry.name == name; };
            if (std::any_of(m_entries.begin() + begin, m_entries.begin() + end, isItsLine))
                m_entries.push_back({selector, {}, text});
            std::string now;
            if (m_nodes.readText(selector, now) == KX_OK && now == text)
                continue;
            const KX_Status status = m_nodes.writeText(selector, text);
            if (!note(status))
                m_remark += "The selector " + selector + " could not be set back to " + text + ". ";
        }
    }

    BagNodes& m_nodes;
    std::vector<BagEntry>& m_entries;
    KX_Status m_status = KX_OK;
    std::string m_remark;
};

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
    Loader(BagNodes& nodes, const std::vector<BagEntry>& entries) : m_nodes(nodes), m_entries(entries) {}

    // One pass over all entries. False when the line failed.
    bool pass(std::vector<BagLoadReport::Failure>& failures)
    {
        m_unset.clear();
        failures.clear();
        for (const BagEntry& entry : m_entries) {
            BagLoadReport::Failure failure{entry.name, entry.value, KX_OK, {}};
            apply(entry, failure);
            if (failure.status == KX_OK)
                continue;
            failures.push_back(failure);
            if (KX_IS_LINE_FAILURE(failure.status)) {
                m_lineStatus = failure.status;
                return false;
            }
        }
        return true;
    }

    KX_Status lineStatus() const { return m_lineStatus; }

private:
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
    KX_Status m_lineStatus = KX_OK;
};

} // namespace

KX_Status collectBag(BagNodes& nodes, std::vector<BagEntry>& entries, std::string& remark)
{
    Collector collector(nodes, entries);
    const KX_Status status = collector.collect();
    remark = collector.remark();
    return status;
}

KX_Status applyBag(BagNodes& nodes, const std::vector<BagEntry>& entries, BagLoadReport& report)
{
    report.entries = entries.size();
    StreamingBracket bracket(nodes);
    Loader loader(nodes, entries);
    size_t before = entries.size() + 1;
    do {
        ++report.passes;
        if (!loader.pass(report.failures))
            return loader.lineStatus();
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
    std::string out = std::to_string(entries - failures.size()) + " of " + std::to_string(entries) +
                      " entries took their value in " + std::to_string(passes) +
                      (passes == 1 ? " pass." : " passes.");
    if (registersValid == "0")
        out += " The camera says that its registers are not valid together.";
    for (const Failure& failure : failures)
        out += "\n" + failure.name + " = " + failure.value + ": " + failure.reason;
    return out;
}

} // namespace kx
