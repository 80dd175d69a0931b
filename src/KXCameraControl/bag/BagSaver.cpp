// Walking a camera through its selectors, and the file.
#include "KXCameraControl/bag/BagSaver.h"

#include "KXCameraControl/bag/BagFile.h"

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
// Of one feature, those of its selectors included; one that has more is saved for the values that they have.
constexpr size_t kMaxSelectors = 32;
// Combinations of one group of selectors; those behind are left out.
constexpr size_t kMaxCombinations = 262144;

bool isReadable(KX_XML_AccessMode mode)
{
    return mode == KX_AM_READ_ONLY || mode == KX_AM_READ_WRITE;
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

    // None where there are too many, with `isBeyond`.
    Selectors selectorsOf(const std::string& feature, bool& isBeyond) const
    {
        Selectors order;
        std::set<std::string> visited{feature};
        isBeyond = !collect(feature, visited, order);
        return isBeyond ? Selectors() : order;
    }

    bool isSelector(const std::string& feature) const { return m_isSelector.count(feature) > 0; }

private:
    // False: there are too many.
    bool collect(const std::string& feature, std::set<std::string>& visited, Selectors& order) const
    {
        const auto found = m_selectorsOf.find(feature);
        if (found == m_selectorsOf.end())
            return true;
        for (const std::string& selector : found->second) {
            if (!visited.insert(selector).second)
                continue; // a circle of selectors: each is taken once
            if (visited.size() > kMaxSelectors + 1 || !collect(selector, visited, order))
                return false;
            order.push_back(selector);
        }
        return true;
    }

    std::map<std::string, std::set<std::string>> m_selectorsOf;
    std::set<std::string> m_isSelector;
};

class Collector
{
public:
    Collector(BagNodes& nodes, Bag& bag) : m_nodes(nodes), m_bag(bag), m_entries(bag.entries) {}

    KX_Status collect()
    {
        const std::vector<std::string> features = m_nodes.streamableFeatures();
        const SelectorTree tree(m_nodes);
        std::map<Selectors, std::vector<std::string>> groups;
        std::vector<std::string> outermost; // selectors that no others select
        bool isAnyBeyond = false;
        for (const std::string& feature : features) {
            bool isBeyond = false;
            const Selectors selectors = tree.selectorsOf(feature, isBeyond);
            isAnyBeyond = isAnyBeyond || isBeyond;
            if (!selectors.empty())
                groups[selectors].push_back(feature);
            else if (tree.isSelector(feature))
                outermost.push_back(feature);
            else
                take(feature);
        }
        if (isAnyBeyond)
            tellCuts({"There are features behind more than " + std::to_string(kMaxSelectors) +
                      " selectors: they are saved for the values that those have."});
        for (const auto& [selectors, selected] : groups)
            takeGroup(selectors, selected);
        // Selectors themselves come last, as they were found: loading leaves them so.
        for (const std::string& feature : outermost)
            take(feature);
        return m_status;
    }

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
        BagEntry entry{feature, {}, {}};
        if (!note(m_nodes.readText(feature, entry.value)))
            return false;
        if (!hasForm(entry)) {
            note("The value of " + feature + " has no form in this file: it is left out.");
            return false;
        }
        m_entries.push_back(std::move(entry));
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
        std::set<std::string> cuts;
        descend(selectors, 0, features, combinations, cuts);
        // Where nothing is saved at all, nothing was cut off.
        if (m_entries.size() > begin)
            tellCuts(cuts);
        restore(originals, begin);
    }

    // False: it is known.
    bool note(const std::string& remark)
    {
        if (std::find(m_bag.notes.begin(), m_bag.notes.end(), remark) != m_bag.notes.end())
            return false;
        m_bag.notes.push_back(remark);
        return true;
    }

    void tellCuts(const std::set<std::string>& cuts)
    {
        for (const std::string& cut : cuts)
            if (note(cut))
                m_bag.remark += cut + " ";
    }

    static std::string tooManyCombinations(const Selectors& selectors)
    {
        std::string names;
        for (const std::string& selector : selectors)
            names += (names.empty() ? "" : ", ") + selector;
        return "There are more than " + std::to_string(kMaxCombinations) + " combinations of " + names +
               ": features are saved for the first ones.";
    }

    // Sets the selectors from the `depth`th on to each of their values in turn.
    void descend(const Selectors& selectors, size_t depth, const std::vector<std::string>& features,
                 size_t& combinations, std::set<std::string>& cuts)
    {
        if (lineFailed())
            return;
        if (combinations >= kMaxCombinations) {
            cuts.insert(tooManyCombinations(selectors));
            return;
        }
        if (depth == selectors.size()) {
            ++combinations;
            takeCombination(selectors, features);
            return;
        }
        const std::string& selector = selectors[depth];
        bool isMore = false;
        const std::vector<std::string> values = m_nodes.selectorValues(selector, kMaxSelectorValues, isMore);
        KX_XML_AccessMode mode = KX_AM_NOT_IMPLEMENTED;
        if (!note(m_nodes.accessMode(selector, mode)))
            return;
        if (isMore && mode == KX_AM_READ_WRITE)
            cuts.insert("The selector " + selector + " has more than " + std::to_string(kMaxSelectorValues) +
                        " values: its features are saved for the one that it has.");
        if (values.empty() || mode != KX_AM_READ_WRITE) {
            descend(selectors, depth + 1, features, combinations, cuts);
            return;
        }
        for (const std::string& value : values)
            if (!lineFailed() && note(m_nodes.writeText(selector, value)))
                descend(selectors, depth + 1, features, combinations, cuts);
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
        const auto length = static_cast<std::ptrdiff_t>(m_entries.size() - begin);
        for (const auto& [selector, text] : originals) {
            const auto isItsLine = [&name = selector](const BagEntry& entry) { return entry.name == name; };
            const auto group = m_entries.begin() + static_cast<std::ptrdiff_t>(begin);
            const BagEntry entry{selector, {}, text};
            if (std::any_of(group, group + length, isItsLine) && hasForm(entry))
                m_entries.push_back(entry);
            std::string now;
            if (m_nodes.readText(selector, now) == KX_OK && now == text)
                continue;
            const KX_Status status = m_nodes.writeText(selector, text);
            if (!note(status))
                m_bag.remark += "The selector " + selector + " could not be set back to " + text + ". ";
        }
    }

    BagNodes& m_nodes;
    Bag& m_bag;
    std::vector<BagEntry>& m_entries;
    KX_Status m_status = KX_OK;
};

KX_Status writeFile(const std::string& path, const std::string& text, std::string& message)
{
    const std::string reason = writeBagFile(path, text);
    if (reason.empty())
        return KX_OK;
    message = "The feature file " + path + " cannot be written: " + reason;
    return KX_E_FILE;
}

} // namespace

KX_Status collectBag(BagNodes& nodes, Bag& bag)
{
    return Collector(nodes, bag).collect();
}

KX_Status saveBag(BagNodes& nodes, const BagIdentity& identity, const std::string& path, std::string& message,
                  uint32_t& count)
{
    Bag bag;
    const KX_Status status = collectBag(nodes, bag);
    message = bag.remark;
    count = static_cast<uint32_t>(bag.entries.size());
    if (status != KX_OK)
        return status;
    if (bag.entries.size() > mostBagEntries) {
        message = "The bag would have " + std::to_string(bag.entries.size()) + " entries, and " +
                  std::to_string(mostBagEntries) + " are possible: nothing is saved.";
        return KX_E_FILE;
    }
    if (bag.entries.empty())
        bag.notes.push_back(
            "No feature of this camera is streamable, readable and writable: nothing is saved.");
    const KX_Status written = writeFile(path, bagText(identity, bag.entries, bag.notes), message);
    return written == KX_OK && !bag.remark.empty() ? KX_E_INCOMPLETE : written;
}

} // namespace kx
