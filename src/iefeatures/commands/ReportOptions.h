// The options of all commands that report on features: how much, and how wide.
#pragma once

#include "iefeatures/console/ReportStyle.h"

#include <string>

namespace CLI
{
class App;
}

namespace companion
{

class ReportOptions
{
public:
    void addOptions(CLI::App& app);
    void addWide(CLI::App& app); // for commands that have nothing else to choose; among all of addOptions()
    void addDetails(CLI::App& app); // for commands that can tell more than what needs a person

    ReportStyle style() const;

private:
    bool m_isDetailed = false;
    bool m_isQuiet = false;
    bool m_isWide = false;
    bool m_hasDifferencesOnly = false;
    std::string m_group;
};

} // namespace companion
