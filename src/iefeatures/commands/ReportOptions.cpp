#include "iefeatures/commands/ReportOptions.h"

#include <CLI/CLI.hpp>

namespace companion
{

void ReportOptions::addOptions(CLI::App& app)
{
    addWide(app);
    app.add_flag("--quiet", m_isQuiet, "Tell how it stands, and no feature");
    app.add_flag("--only-differences", m_hasDifferencesOnly,
                 "Leave out what only one side has, and warnings");
    app.add_option("--group", m_group, "category: features under the categories that list them")
        ->check(CLI::IsMember({"category"}))
        ->type_name("BY");
}

void ReportOptions::addWide(CLI::App& app)
{
    app.add_flag("--wide", m_isWide, "Cut no value, however long the line becomes");
}

void ReportOptions::addDetails(CLI::App& app)
{
    app.add_flag("--details", m_isDetailed,
                 "Tell all that is not as the file says, not only what needs attention");
}

ReportStyle ReportOptions::style() const
{
    ReportStyle style(m_isQuiet ? Detail::Summary : m_isDetailed ? Detail::All : Detail::Attention);
    style.columns = m_isWide ? 0 : reportColumns();
    style.isGrouped = !m_group.empty();
    style.hasDifferencesOnly = m_hasDifferencesOnly;
    return style;
}

} // namespace companion
