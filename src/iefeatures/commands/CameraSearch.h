// Finding the cameras that a command is meant for: waiting for them, and telling which are missing.
#pragma once

#include "iefeatures/cameras/CameraSelection.h"
#include "iefeatures/commands/Command.h"

#include <functional>

namespace companion
{

// --wait and --keep-going.
struct SearchOptions
{
    double seconds = 0;
    bool isKeptGoing = false;

    void addWait(CLI::App& app);
    void addKeepGoing(CLI::App& app);
};

struct SearchRule
{
    bool takesControl = false; // so that one which another host controls is waited for
    bool isOpen = false;       // whoever is there is meant: addresses that do not answer are told
};

// For what looks for cameras again later; what goes wrong is told.
Look lookOf(World& world);

class CameraSearch
{
public:
    using Choice = CameraSelection::Choice;
    using Choose = std::function<Choice(const std::vector<ListedCamera>& cameras)>;

    // `choose` is asked about all cameras that are found, each time that they are looked for.
    CameraSearch(World& world, const SearchOptions& options, const SearchRule& rule)
        : m_world(world), m_options(options), m_rule(rule)
    {}

    // ExitWell: there are cameras to go on with. What was in the way is told. Blocks for the time of --wait
    // at most, beside one look; an interrupt (Interrupt.h) ends that.
    int run(const Choose& choose);
    // Without any option, for a command that chooses in another way.
    static int findAll(World& world, std::vector<ListedCamera>& cameras);
    // What hid cameras from the last search, a line each.
    static void tellProblems(Console& console);

    const std::vector<ListedCamera>& cameras() const { return m_choice.cameras; }
    // The exit code of a command that ended with `code`: cameras that were missing are no good end.
    int codeOf(int code) const;

private:
    int look(const Choose& choose);
    bool isWorthWaiting() const;
    bool isComplete() const;
    void tellWaiting() const;
    void tellMisses() const;
    void tellSilence() const;
    QStringList namelessCameras() const;

    World& m_world;
    const SearchOptions m_options;
    const SearchRule m_rule;
    std::vector<ListedCamera> m_found;
    Choice m_choice;
};

} // namespace companion
