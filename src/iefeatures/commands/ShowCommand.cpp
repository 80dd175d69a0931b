#include "iefeatures/commands/ShowCommand.h"

#include "iefeatures/compare/FeatureSource.h"
#include "iefeatures/compare/FeaturesReport.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/JsonLine.h"

#include <CLI/CLI.hpp>

namespace companion
{

void ShowCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "Features file")
        ->required()
        ->type_name("")
        ->check([](const std::string& file) { return std::string(file.empty() ? "Name a file." : ""); });
    m_report.addWide(app);
    app.add_flag("--json", m_json, "JSON lines instead of text");
}

int ShowCommand::execute(World& world)
{
    FeatureSource source;
    source.path = QString::fromStdString(m_file);
    if (const int code = readSource(world.console, source, m_json))
        return code;
    Json object = {{"path", json(source.path)}};
    object.update(featuresJson(source.content));
    world.console.object("file", object);
    if (!m_json)
        world.console.out(featuresText(source.content, m_report.style().columns));
    return ExitWell;
}

} // namespace companion
