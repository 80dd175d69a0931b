// iefeatures diff: what two features files or cameras have set differently, or the files of a folder and
// their cameras.
#pragma once

#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/commands/FolderOption.h"
#include "iefeatures/commands/LineOption.h"
#include "iefeatures/commands/ReportOptions.h"
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
    struct Pair
    {
        std::vector<FeatureSource> sources = std::vector<FeatureSource>(2);
        FeatureComparison comparison = {};
        int code = 0; // an ExitCode
        QString result = {};

        void end(int exitCode, const QString& word);
    };
    using Pairs = std::vector<Pair>;

    int compareTwo(World& world) const;
    int compareFolder(World& world);
    int findSources(World& world, std::vector<FeatureSource>& sources) const;
    CameraSearch::Choice meant(const std::vector<ListedCamera>& cameras) const;
    int compare(Console& console, Pairs& pairs) const;
    int readAll(Console& console, Pairs& pairs) const;
    void read(Console& console, Pair& pair, bool areCameras) const;
    void tell(Console& console, Pair& pair) const;
    FeatureComparison comparisonOf(Console& console, const std::vector<FeatureSource>& sources) const;

    std::string m_a;
    std::string m_b;
    std::vector<std::string> m_ignored;
    bool m_all = false;
    bool m_isStrict = false;
    bool m_skipsUnreadable = false;
    ReportOptions m_report;
    bool m_json = false;
    SearchOptions m_search;
    FolderOption m_folder;
    CameraSelection m_selection; // of a folder
    LineOption m_line;
    LogOptions m_log;
};

} // namespace companion
