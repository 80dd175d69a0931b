#include "iefeatures/commands/Companion.h"

#include "iefeatures/commands/CheckCommand.h"
#include "iefeatures/commands/CloneCommand.h"
#include "iefeatures/commands/DiffCommand.h"
#include "iefeatures/commands/ExportCommand.h"
#include "iefeatures/commands/GetCommand.h"
#include "iefeatures/commands/ImportCommand.h"
#include "iefeatures/commands/IpCommand.h"
#include "iefeatures/commands/LineCommand.h"
#include "iefeatures/commands/ListCommand.h"
#include "iefeatures/commands/RollbackCommand.h"
#include "iefeatures/commands/SetCommand.h"
#include "iefeatures/commands/ShowCommand.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/OperatingSystem.h"
#include "iefeatures/console/Text.h"

#include <SuiteTools/SuiteTools.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <functional>
#include <memory>
#include <new>

namespace companion
{
namespace
{

using Commands = std::vector<std::unique_ptr<Command>>;

Commands allCommands()
{
    Commands commands;
    commands.push_back(std::make_unique<ListCommand>());
    commands.push_back(std::make_unique<ExportCommand>());
    commands.push_back(std::make_unique<ImportCommand>());
    commands.push_back(std::make_unique<ShowCommand>());
    commands.push_back(std::make_unique<DiffCommand>());
    commands.push_back(std::make_unique<PlanCommand>());
    commands.push_back(std::make_unique<VerifyCommand>());
    commands.push_back(std::make_unique<RollbackCommand>());
    commands.push_back(std::make_unique<CloneCommand>());
    commands.push_back(std::make_unique<GetCommand>());
    commands.push_back(std::make_unique<SetCommand>());
    commands.push_back(std::make_unique<RunCommand>());
    commands.push_back(std::make_unique<IpCommand>());
    commands.push_back(std::make_unique<LineCommand>());
    return commands;
}

void describe(CLI::App& app, const Commands& commands)
{
    app.set_version_flag("--version", "iefeatures " + VELAInterface::softwareVersion().toStdString());
    app.footer(exitCodeTable());
    app.require_subcommand(0, 1);
    for (const auto& command : commands) {
        CLI::App* parser = app.add_subcommand(command->name(), command->summary());
        parser->footer(exitCodeTable());
        command->addOptions(*parser);
    }
}

// The parser passes over most of them. A script whose variable is unset must not mean anything by it.
bool isEmptyValue(const std::string& argument)
{
    return argument.empty() || (argument.rfind("--", 0) == 0 && argument.back() == '=');
}

// The option that took several words, the last of which may have been meant for what is required.
const CLI::Option* greedyOption(const CLI::App& app)
{
    for (const CLI::Option* option : app.get_options())
        if (!option->get_positional() && option->get_expected_max() > 1 && option->results().size() > 1)
            return option;
    for (const CLI::App* part : app.get_subcommands([](const CLI::App*) { return true; }))
        if (const CLI::Option* option = greedyOption(*part))
            return option;
    return nullptr;
}

// "get --serial E1 Gain" leaves nothing for FEATURE.
std::string withGreed(const std::string& problem, const CLI::App& app)
{
    const CLI::Option* option = greedyOption(app);
    if (!option)
        return problem;
    return problem + "; " + option->get_name() + " has taken all the words behind it (" +
           CLI::detail::join(option->results(), " ") + "): put it last, or -- behind its own";
}

// CLI11 has arguments that nobody knows the wrong way round.
std::string textOf(const CLI::ParseError& problem, const CLI::App& app)
{
    if (dynamic_cast<const CLI::RequiredError*>(&problem))
        return withGreed(problem.what(), app);
    if (!dynamic_cast<const CLI::ExtrasError*>(&problem))
        return problem.what();
    const std::vector<std::string> words = app.remaining(true);
    return (words.size() == 1 ? "The following argument was not expected: "
                              : "The following arguments were not expected: ") +
           CLI::detail::join(words, " ");
}

int tellUsage(Console& console, const CLI::App& app, const std::string& problem)
{
    console.err(printableText(QString::fromStdString(problem)) + '\n');
    console.note('\n' + app.help());
    return ExitUsage;
}

bool wantsJson(const CLI::App& app, const Command& command)
{
    const CLI::App* parser = app.get_subcommand(command.name());
    while (!parser->get_subcommands().empty())
        parser = parser->get_subcommands().front();
    const CLI::Option* option = parser->get_option_no_throw("--json");
    return option && option->count() > 0;
}

// Of a command line that is wrong: by its words alone.
void beginJson(Console& console, const std::vector<std::string>& arguments)
{
    if (std::find(arguments.begin(), arguments.end(), "--json") != arguments.end())
        console.beginJson(arguments.front());
}

// A result that nobody could read is not a good end.
int withOutputChecked(Console& console, int code)
{
    if (code != ExitWell || console.isOutGood() || console.isReaderGone())
        return code;
    console.err(std::string("The standard output cannot be written.\n"));
    return ExitInputOutput;
}

int ended(Console& console, int code)
{
    console.endJson(code);
    return withOutputChecked(console, code);
}

int tellFailure(Console& console, const std::string& problem)
{
    console.err(problem + '\n');
    return ExitInputOutput;
}

// Whatever is thrown has closed its cameras on the way.
int guarded(Console& console, const std::function<int()>& body)
{
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return tellFailure(console, "There is not enough memory.");
    } catch (const std::exception& problem) {
        return tellFailure(console, std::string("It could not be done: ") + problem.what());
    } catch (...) {
        return tellFailure(console, "It could not be done.");
    }
}

int run(Command& command, World& world)
{
    return guarded(world.console, [&] {
        const int code = command.execute(world);
        if (!wasLimitMet())
            return code;
        return tellFailure(world.console, "A file met the limit on the size of files (ulimit -f).");
    });
}

int runArguments(const std::vector<std::string>& arguments, World& world)
{
    const Commands commands = allCommands();
    CLI::App app("Copies the features of GenICam cameras into files and back.", "iefeatures");
    app.allow_windows_style_options(false); // "/folder" is a path on every system
    describe(app, commands);
    try {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend()); // as CLI11 takes them
        app.parse(std::move(reversed));
    } catch (const CLI::CallForHelp&) {
        world.console.out(app.help());
        return withOutputChecked(world.console, ExitWell);
    } catch (const CLI::CallForVersion& version) {
        world.console.out(std::string(version.what()) + "\n");
        return withOutputChecked(world.console, ExitWell);
    } catch (const CLI::ParseError& problem) {
        beginJson(world.console, arguments);
        return ended(world.console, tellUsage(world.console, app, textOf(problem, app)));
    }
    if (std::any_of(arguments.begin(), arguments.end(), isEmptyValue)) {
        beginJson(world.console, arguments);
        return ended(world.console, tellUsage(world.console, app, "An empty argument means nothing."));
    }
    for (const auto& command : commands) {
        if (!app.got_subcommand(command->name()))
            continue;
        if (wantsJson(app, *command))
            world.console.beginJson(command->name());
        return ended(world.console, run(*command, world));
    }
    return tellUsage(world.console, app, "Name a command.");
}

} // namespace

int runCompanion(const std::vector<std::string>& arguments, World world)
{
    return guarded(world.console, [&] { return runArguments(arguments, world); });
}

} // namespace companion
