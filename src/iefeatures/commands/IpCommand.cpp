#include "iefeatures/commands/IpCommand.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/commands/Agreement.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/imports/WriteReport.h"
#include "iefeatures/network/NetworkWrites.h"

#include <CLI/CLI.hpp>

namespace companion
{
namespace
{

const char* const kPlace = "ADDRESS/MASK[/GATEWAY]";

std::optional<bool> switchOf(const std::string& word)
{
    return word.empty() ? std::nullopt : std::make_optional(word == "on");
}

// False: the text is wrong, which is told.
bool readPlace(Console& console, const std::string& text, std::optional<IpPlace>& place)
{
    QString problem;
    if (!text.empty())
        place = parseIpPlace(QString::fromStdString(text), problem);
    if (!problem.isEmpty())
        console.err(problem + '\n');
    return problem.isEmpty();
}

// An address and a name belong to one camera.
bool isForOne(const NetworkTask& task)
{
    return task.forced || task.persistent || task.userName;
}

} // namespace

void IpCommand::addOptions(CLI::App& app)
{
    const auto addPlace = [&](const char* name, std::string& text, const char* help) {
        app.add_option(name, text, help)->type_name(kPlace)->check(isGiven("Give an address."));
    };
    m_selection.addOptions(app);
    m_search.addWait(app);
    addPlace("--force", m_forced,
             "An address at once, until the camera is switched off; reaches it in another network too");
    addPlace("--persistent", m_persistent, "An address whenever the camera is switched on");
    app.add_option("--dhcp", m_dhcp, "Whether the camera asks for an address when it is switched on")
        ->check(CLI::IsMember({"on", "off"}));
    app.add_option("--lla", m_lla, "Whether the camera takes a link-local address where it has no other")
        ->check(CLI::IsMember({"on", "off"}));
    app.add_option("--user-name", m_userName, "What the camera calls itself")->type_name("NAME");
    app.add_flag("--yes", m_isAgreed, "Do not ask");
    m_audit.addOptions(app);
    app.add_flag("--json", m_json, "One JSON object a line for each camera");
}

int IpCommand::readTask(Console& console, NetworkTask& task) const
{
    if (!readPlace(console, m_forced, task.forced) || !readPlace(console, m_persistent, task.persistent))
        return ExitUsage;
    task.usesDhcp = switchOf(m_dhcp);
    task.usesLla = switchOf(m_lla);
    if (m_userName)
        task.userName = QString::fromStdString(*m_userName);
    if (!task.isEmpty())
        return ExitWell;
    console.err(std::string("Say what to set: --force, --persistent, --dhcp, --lla, --user-name.\n"));
    return ExitUsage;
}

int IpCommand::execute(World& world)
{
    NetworkTask task;
    if (const int code = readTask(world.console, task))
        return code;
    CameraSearch search(world, m_search, {false, m_selection.isOpen()});
    if (const int code = search.run([&](const auto& cameras) { return m_selection.choose(cameras); }))
        return code;
    if (isForOne(task) && search.cameras().size() != 1) {
        world.console.err(
            QString("An address or a name is for one camera; %1 are chosen.\n").arg(search.cameras().size()));
        return ExitUsage;
    }
    const Interrupt interrupt;
    if (const int code = ask(world, search.cameras(), task))
        return code;
    return search.codeOf(write(world, search.cameras(), task));
}

// What speaks against it comes before the question, and is looked at again behind the answer: a question may
// stand for hours.
int IpCommand::ask(World& world, const std::vector<ListedCamera>& cameras, const NetworkTask& task) const
{
    if (const int code = object(world.console, cameras, task))
        return code;
    if (m_isAgreed)
        return ExitWell;
    QStringList titles;
    for (const ListedCamera& camera : cameras)
        titles += camera.title() + (camera.mac.isEmpty() ? QString() : " (" + camera.mac + ')');
    const QString question = "Give " + titles.join(", ") + ": " + networkWords(task).join("; ") + '?';
    if (const int code = askForAgreement(world, question))
        return code;
    return object(world.console, cameras, task);
}

int IpCommand::object(Console& console, const std::vector<ListedCamera>& cameras,
                      const NetworkTask& task) const
{
    bool isGood = true;
    for (const ListedCamera& camera : cameras) {
        for (const QString& objection : networkObjections(camera, task)) {
            console.err(camera.title() + ": " + objection + '\n');
            isGood = false;
        }
    }
    if (!isGood)
        console.err(std::string("Nothing was written.\n"));
    return isGood ? ExitWell : ExitJobFailed;
}

int IpCommand::write(World& world, const std::vector<ListedCamera>& cameras, const NetworkTask& task) const
{
    std::vector<NetworkJob> jobs;
    for (const ListedCamera& camera : cameras)
        jobs.push_back({camera, task});
    return writeNetworks(world.console, lookOf(world), name(), m_audit.rule(), jobs);
}

} // namespace companion
