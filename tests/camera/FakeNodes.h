// Nodes in a table, for what walks over the nodes of a camera.
#pragma once

#include "KXCameraControl/bag/BagLoader.h"
#include "KXCameraControl/bag/BagSaver.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tests
{

// The value of a selected feature depends on its selectors.
class FakeNodes : public kx::BagNodes
{
public:
    struct Node
    {
        std::string value;
        KX_XML_AccessMode mode = KX_AM_READ_WRITE;
    };

    std::vector<std::string> order;
    std::map<std::string, Node> nodes;
    std::map<std::string, std::map<std::string, Node>> selectedNodes; // feature -> selector state -> node
    std::map<std::string, std::vector<std::string>> selects;
    std::map<std::string, std::vector<std::string>> values;                    // of selectors
    std::map<std::string, std::function<KX_Status(const std::string&)>> rules; // what a write meets
    std::vector<std::string> log;
    KX_Status lineStatus = KX_OK;
    std::string failsToRead;
    unsigned askedForSelected = 0;
    KX_Status failure = KX_E_GC_ACCESS;

    void addSelector(const std::string& name, std::vector<std::string> all, std::vector<std::string> selected)
    {
        order.push_back(name);
        nodes[name].value = all.front();
        values[name] = std::move(all);
        selects[name] = std::move(selected);
    }

    std::string stateFor(const std::string& feature)
    {
        std::string state;
        for (const auto& [selector, selected] : selects)
            if (std::count(selected.begin(), selected.end(), feature))
                state += stateFor(selector) + selector + "=" + at(selector).value + ";";
        return state;
    }

    Node& at(const std::string& feature)
    {
        const auto selected = selectedNodes.find(feature);
        return selected == selectedNodes.end() ? nodes.at(feature) : selected->second.at(stateFor(feature));
    }

    std::vector<std::string> streamableFeatures() override { return order; }
    std::vector<std::string> selectors() override
    {
        std::vector<std::string> names;
        for (const auto& selector : selects)
            names.push_back(selector.first);
        return names;
    }
    std::vector<std::string> selectedFeatures(const std::string& feature) override
    {
        ++askedForSelected;
        const auto found = selects.find(feature);
        return found == selects.end() ? std::vector<std::string>() : found->second;
    }
    std::vector<std::string> selectorValues(const std::string& selector, size_t limit, bool& isMore) override
    {
        const std::vector<std::string>& all = values[selector];
        isMore = all.size() > limit;
        return isMore ? std::vector<std::string>() : all;
    }
    bool exists(const std::string& feature) override
    {
        return nodes.count(feature) || selectedNodes.count(feature);
    }
    KX_Status accessMode(const std::string& feature, KX_XML_AccessMode& mode) override
    {
        if (lineStatus == KX_OK)
            mode = at(feature).mode;
        return lineStatus;
    }
    KX_Status readText(const std::string& feature, std::string& text) override
    {
        if (lineStatus != KX_OK)
            return lineStatus;
        if (!exists(feature))
            return KX_E_GC_PROPERTY;
        if (feature == failsToRead)
            return failure;
        text = at(feature).value;
        return KX_OK;
    }
    KX_Status writeText(const std::string& feature, const std::string& text) override
    {
        log.push_back(feature + "=" + text);
        if (lineStatus != KX_OK)
            return lineStatus;
        if (!exists(feature))
            return KX_E_GC_PROPERTY;
        const auto rule = rules.find(feature);
        const KX_Status status = rule == rules.end() ? KX_OK : rule->second(text);
        if (status == KX_OK)
            at(feature).value = text;
        return status;
    }
    KX_Status execute(const std::string& command) override
    {
        log.push_back(command + "()");
        return lineStatus;
    }
};

// A width, and a gain of three channels.
inline FakeNodes channels()
{
    FakeNodes fake;
    fake.order = {"Width"};
    fake.nodes["Width"].value = "640";
    fake.addSelector("GainSelector", {"All", "Red", "Blue"}, {"Gain"});
    fake.order.push_back("Gain");
    fake.selectedNodes["Gain"] = {{"GainSelector=All;", {"1", KX_AM_READ_WRITE}},
                                  {"GainSelector=Red;", {"2", KX_AM_READ_WRITE}},
                                  {"GainSelector=Blue;", {"3", KX_AM_READ_ONLY}}};
    fake.nodes["GainSelector"].value = "Red";
    return fake;
}

} // namespace tests
