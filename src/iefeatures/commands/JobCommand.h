// What commands have in common that run jobs on each chosen camera.
#pragma once

#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/commands/LineOption.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/running/JobRun.h"

#include <vector>

namespace companion
{

class JobCommand : public Command
{
public:
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

protected:
    // A sentence when a folder that is to be written to takes nothing; asked before any camera is.
    virtual QString outputProblem() const { return {}; }
    // ExitWell, or why nothing is done, which is told. As above.
    virtual int prepare(Console&) { return ExitWell; }
    virtual CameraSelection::Choice choose(const CameraSelection& selection,
                                           const std::vector<ListedCamera>& found)
    {
        return selection.choose(found);
    }
    // When the choice was no good, beside what was told of it.
    virtual void tellRefusal(Console&) const {}
    // A sentence for each reason not to begin at all.
    virtual QStringList objections(const std::vector<ListedCamera>&) const { return {}; }
    // Does the work, tells people (or scripts) what it has come to and gives an ExitCode.
    virtual int carryOut(Console& console, const std::vector<ListedCamera>& cameras) const = 0;

    // Whether another host's control keeps the command from its work.
    virtual bool takesControl() const { return true; }

    bool isBag() const { return m_format == "bag"; }
    bool isFormatGiven() const { return !m_format.empty(); }
    virtual const char* formatHelp() const = 0;
    bool wantsJson() const { return m_json; }

private:
    CameraSelection m_selection;
    LineOption m_line;
    SearchOptions m_search;
    LogOptions m_log;
    std::string m_format; // empty: as the command has it
    bool m_json = false;
};

} // namespace companion
