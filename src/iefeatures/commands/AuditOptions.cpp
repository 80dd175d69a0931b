#include "iefeatures/commands/AuditOptions.h"

#include "iefeatures/console/OptionChecks.h"

#include <CLI/CLI.hpp>

namespace companion
{

void AuditOptions::addOptions(CLI::App& app)
{
    CLI::Option* file =
        app.add_option("--audit", m_file, "File that the audit lines go to; off: none are left")
            ->type_name("FILE")
            ->check(isGiven("Name a file, or off."));
    app.add_flag("--no-audit", m_isUnaudited, "The same as --audit off")->excludes(file);
    app.add_flag("--require-audit", m_isRequired,
                 "Write nothing to a camera of which no audit line can be left");
    app.final_callback([this] {
        if (m_isRequired && isOff())
            throw CLI::ValidationError("--require-audit", "No line can be left with the audit log off.");
    });
}

AuditRule AuditOptions::rule() const
{
    return {!isOff(), QString::fromStdString(m_file), m_isRequired};
}

} // namespace companion
