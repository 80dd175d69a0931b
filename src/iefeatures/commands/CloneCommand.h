// iefeatures clone: cameras set as another one is.
#pragma once

#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/commands/ImportOptions.h"
#include "iefeatures/console/LogSink.h"

#include <string>

namespace companion
{

class CloneCommand : public Command
{
public:
    const char* name() const override { return "clone"; }
    const char* summary() const override { return "Set cameras as another one is set"; }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    // What is known of the cameras once the command line has been looked at.
    struct Roles
    {
        std::vector<ListedCamera> sources; // one, once nothing was objected to
        std::vector<ListedCamera> targets;
        const ListedCamera& source() const { return sources.front(); }
    };
    CameraWord sourceWord() const;
    CameraSearch::Choice assign(const std::vector<ListedCamera>& cameras, Roles& roles) const;
    int objectTo(Console& console, const Roles& roles) const;
    int clone(World& world, const Roles& roles) const;
    QString exportSource(Console& console, const ListedCamera& source, const QString& folder) const;

    std::string m_source;
    CameraSelection m_targets;
    SearchOptions m_search;
    bool m_isAgreed = false;
    bool m_json = false;
    ImportOptions m_options;
    LogOptions m_log;
};

} // namespace companion
