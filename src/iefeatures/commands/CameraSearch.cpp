#include "iefeatures/commands/CameraSearch.h"

#include "iefeatures/cameras/SearchPlaces.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/Text.h"

#include "camera_line/SearchProblems.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <thread>

namespace companion
{
namespace
{

using Clock = std::chrono::steady_clock;

// Between two looks; a Ctrl-C is noticed within this.
constexpr std::chrono::milliseconds kPause{50};

bool isFree(const ListedCamera& camera)
{
    return camera.device.nStatus == KX_AVAILABILITY_FREE;
}

// One that another host only reads, or has taken for itself, can be read as well, or never.
bool isReachable(const ListedCamera& camera)
{
    return camera.device.nStatus != KX_AVAILABILITY_UNREACHABLE;
}

} // namespace

void SearchOptions::addWait(CLI::App& app)
{
    app.add_option("--wait", seconds, "Wait so long for cameras that are not there yet, or are in use")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 86400.0));
}

void SearchOptions::addKeepGoing(CLI::App& app)
{
    app.add_flag("--keep-going", isKeptGoing, "Go on with the cameras that are there when one is missing");
}

Look lookOf(World& world)
{
    return [&world] {
        std::vector<ListedCamera> cameras;
        CameraSearch::findAll(world, cameras);
        return cameras;
    };
}

int CameraSearch::findAll(World& world, std::vector<ListedCamera>& cameras)
{
    const QStringList objections = searchObjections();
    for (const QString& objection : objections)
        world.console.err(printable(objection) + '\n');
    if (!objections.isEmpty())
        return ExitUsage;
    std::vector<KX_DeviceEntry> entries;
    if (const KX_Status status = world.enumerate(entries)) {
        tellSearchFailure(world.console, status);
        return ExitInputOutput;
    }
    cameras = camerasFrom(entries);
    return ExitWell;
}

void CameraSearch::tellProblems(Console& console)
{
    for (const QString& problem : camera_line::searchProblems())
        console.err(printable(problem) + '\n');
}

int CameraSearch::run(const Choose& choose)
{
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(m_options.seconds));
    int code = look(choose);
    if (code == ExitWell && isWorthWaiting() && m_options.seconds > 0) {
        tellWaiting();
        const Interrupt interrupt;
        while (code == ExitWell && isWorthWaiting() && Clock::now() < end && !Interrupt::isRequested()) {
            std::this_thread::sleep_for(kPause);
            code = look(choose);
        }
        if (Interrupt::isRequested()) {
            m_world.console.err(std::string("Interrupted.\n"));
            return ExitInterrupted;
        }
    }
    if (code != ExitWell)
        return code;
    tellMisses();
    if (!m_choice.refusals.isEmpty())
        return ExitUsage;
    const bool mayGoOn = isComplete() || (m_options.isKeptGoing && !m_choice.cameras.empty());
    return mayGoOn ? ExitWell : ExitNoSuchCamera;
}

int CameraSearch::look(const Choose& choose)
{
    const int code = findAll(m_world, m_found);
    if (code == ExitWell)
        m_choice = choose(m_found);
    return code;
}

bool CameraSearch::isWorthWaiting() const
{
    const auto isGood = m_rule.takesControl ? isFree : isReachable;
    const bool lacksOne = m_rule.isOpen && !silentAddresses(m_found).isEmpty();
    return lacksOne || !m_choice.misses.isEmpty() ||
           !std::all_of(m_choice.cameras.begin(), m_choice.cameras.end(), isGood);
}

void CameraSearch::tellWaiting() const
{
    QStringList reasons = namelessCameras() + m_choice.misses;
    for (const ListedCamera& camera : m_choice.cameras)
        if (!isFree(camera))
            reasons += camera.title() + " is " + camera.status + '.';
    if (m_rule.isOpen)
        for (const QString& address : silentAddresses(m_found))
            reasons += noAnswerAt(address);
    m_world.console.err(
        QString("Waiting for %1 s at most: %2\n").arg(m_options.seconds).arg(reasons.join(' ')));
}

void CameraSearch::tellMisses() const
{
    if (m_rule.isOpen || !m_choice.misses.isEmpty()) {
        tellSilence();
        tellProblems(m_world.console);
    }
    for (const QString& sentence : namelessCameras() + m_choice.misses + m_choice.lacks + m_choice.refusals)
        m_world.console.err(sentence + '\n');
}

void CameraSearch::tellSilence() const
{
    for (const QString& address : silentAddresses(m_found))
        m_world.console.err(noAnswerAt(address) + '\n');
}

// Any of them may be the one that is missing.
QStringList CameraSearch::namelessCameras() const
{
    QStringList sentences;
    for (const ListedCamera& camera : m_found)
        if (!m_choice.misses.isEmpty() && camera.isNameless())
            sentences += QString("The %1 is %2, and tells nobody else which one it is.")
                             .arg(camera.title(), camera.status);
    return sentences;
}

int CameraSearch::codeOf(int code) const
{
    return code == ExitWell && !isComplete() ? ExitNoSuchCamera : code;
}

bool CameraSearch::isComplete() const
{
    return m_choice.misses.isEmpty() && m_choice.lacks.isEmpty();
}

} // namespace companion
