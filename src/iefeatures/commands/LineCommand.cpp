#include "iefeatures/commands/LineCommand.h"

#include "iefeatures/commands/LineAdoptCommand.h"
#include "iefeatures/commands/LineApplyCommand.h"
#include "iefeatures/commands/LineCheckCommand.h"
#include "iefeatures/commands/LineInitCommand.h"
#include "iefeatures/commands/LineReplaceCommand.h"
#include "iefeatures/console/ExitCode.h"

#include <CLI/CLI.hpp>

namespace companion
{

LineCommand::LineCommand()
{
    m_parts.push_back({std::make_unique<LineInitCommand>()});
    m_parts.push_back({std::make_unique<LineCheckCommand>()});
    m_parts.push_back({std::make_unique<LineApplyCommand>()});
    m_parts.push_back({std::make_unique<LineAdoptCommand>()});
    m_parts.push_back({std::make_unique<LineReplaceCommand>()});
}

void LineCommand::addOptions(CLI::App& app)
{
    app.require_subcommand(1);
    for (Part& part : m_parts) {
        CLI::App* parser = app.add_subcommand(part.command->name(), part.command->summary());
        parser->footer(lineExitCodeTable());
        part.command->addOptions(*parser);
        part.parser = parser;
    }
}

int LineCommand::execute(World& world)
{
    for (const Part& part : m_parts)
        if (part.parser->parsed())
            return part.command->execute(world);
    return ExitUsage; // the parser lets nothing come here
}

} // namespace companion
