// iefeatures diff: what two features files or cameras have set differently.
#pragma once

#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/compare/FeatureComparison.h"
#include "iefeatures/compare/FeatureSource.h"
#include "iefeatures/console/LogSink.h"

#include <string>
#include <vector>

namespace companion
{

class DiffCommand : public Command
{
public:
    const char* name() const override { return "diff"; }
    const char* summary() const override
    {
        return "Show what two features files or cameras have differently";
    }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    int findSources(World& world, std::vector<FeatureSource>& sources) const;
    CameraSearch::Choice meant(const std::vector<ListedCamera>& cameras) const;
    int compare(Console& console, std::vector<FeatureSource>& sources) const;
    FeatureComparison comparisonOf(Console& console, const std::vector<FeatureSource>& sources) const;

    std::string m_a;
    std::string m_b;
    std::vector<std::string> m_ignored;
    bool m_all = false;
    bool m_isStrict = false;
    bool m_skipsUnreadable = false;
    bool m_json = false;
    SearchOptions m_search;
    LogOptions m_log;
};

} // namespace companion
