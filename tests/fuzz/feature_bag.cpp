// A feature bag: read, loaded into a camera that takes some of it, and written again.
#include "KXCameraControl/bag/BagLoader.h"
#include "fuzz/Fuzz.h"

#include <map>

namespace
{

// Features "S0" to "S9" select those of the next number; values longer than 8 characters are refused.
class Nodes : public kx::BagNodes
{
public:
    std::vector<std::string> streamableFeatures() override { return {}; }
    std::vector<std::string> selectors() override { return {"S0", "S1", "S2", "S9"}; }
    std::vector<std::string> selectedFeatures(const std::string& name) override
    {
        if (name.size() != 2 || name[0] != 'S')
            return {};
        return {std::string{'S', static_cast<char>(name[1] + 1)}, "Gain"};
    }
    std::vector<std::string> selectorValues(const std::string&, size_t, bool& isMore) override
    {
        isMore = false;
        return {};
    }
    bool exists(const std::string& name) override { return name.find('!') == std::string::npos; }
    KX_Status accessMode(const std::string&, KX_XML_AccessMode& mode) override
    {
        mode = KX_AM_READ_WRITE;
        return KX_OK;
    }
    KX_Status readText(const std::string& name, std::string& text) override
    {
        text = m_values[name];
        return statusOf(name);
    }
    KX_Status writeText(const std::string& name, const std::string& text) override
    {
        if (text.size() > 8)
            return KX_E_GC_RANGE;
        m_values[name] = text;
        return statusOf(name);
    }
    KX_Status execute(const std::string& name) override { return statusOf(name); }

private:
    static KX_Status statusOf(const std::string& name)
    {
        if (name == "Lost")
            return KX_E_NO_ANSWER;
        return name.find('?') == std::string::npos ? KX_OK : KX_E_GC_ACCESS;
    }

    std::map<std::string, std::string> m_values;
};

bool sayTheSame(const std::vector<kx::BagEntry>& a, const std::vector<kx::BagEntry>& b)
{
    return std::equal(
        a.begin(), a.end(), b.begin(), b.end(), [](const kx::BagEntry& left, const kx::BagEntry& right) {
            return left.name == right.name && left.selectors == right.selectors && left.value == right.value;
        });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::vector<kx::BagEntry> entries;
    std::string error;
    if (!kx::parseBag(text, entries, error)) {
        fuzz::promise(!error.empty(), "who refuses a bag says why");
        return 0;
    }
    Nodes nodes;
    kx::BagLoadReport report;
    const KX_Status status = kx::applyBag(nodes, entries, report);
    fuzz::promise(status == KX_OK ? report.failed == 0 : report.failed > 0,
                  "a load fails exactly where something did not take its value");
    fuzz::promise(report.failed + report.untried <= entries.size() && report.failures.size() <= report.failed,
                  "failures are entries");
    report.text();

    std::vector<kx::BagEntry> plain;
    for (kx::BagEntry entry : entries) {
        entry.selectors.clear();
        if (kx::hasForm(entry))
            plain.push_back(entry);
    }
    std::vector<kx::BagEntry> again;
    fuzz::promise(kx::parseBag(kx::bagText({text, "M", "1"}, plain, {text}), again, error) &&
                      sayTheSame(plain, again),
                  "what is written reads the same");
    return 0;
}
