#include "iefeatures/commands/LineTaking.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/line/InventoryEdit.h"
#include "iefeatures/line/LineMatch.h"

#include <algorithm>

namespace companion
{
namespace
{

// Who goes by another name, or is at another address, than at the first look.
void compareLooks(const std::vector<ListedCamera>& now, std::vector<CapturedCamera>& cameras)
{
    for (CapturedCamera& one : cameras) {
        const ListedCamera& before = one.camera;
        const bool isAlike = std::any_of(now.begin(), now.end(), [&](const ListedCamera& camera) {
            return camera.mac == before.mac && camera.guid == before.guid && camera.serial == before.serial &&
                   camera.userName == before.userName && camera.address == before.address;
        });
        if (!isAlike)
            one.problems += "its name or address was another one at the second look, or it was gone.";
    }
}

void tellTaken(Console& console, const CapturedCamera& one, Taken taken)
{
    console.object("line_camera", {{"name", json(one.entry.name)},
                                   {"camera", cameraJson(one.camera)},
                                   {"features", jsonUnlessEmpty(one.entry.featuresFile)},
                                   {"bag", jsonUnlessEmpty(one.entry.bagFile)},
                                   {"moved", json(QStringList(one.entry.remarks.keys()))}});
    if (one.hasNoFeaturesFile)
        console.err(
            one.camera.title() +
            ": it has no DeviceFirmwareVersion, without which there is no features file" +
            (one.entry.bagFile.isEmpty()
                 ? ", and its description calls no feature streamable: none of its features is kept.\n"
                 : "; a feature bag of it was taken, which can be set and not be compared.\n"));
    for (auto it = one.entry.remarks.cbegin(); it != one.entry.remarks.cend(); ++it)
        console.err(one.camera.title() + ": " + printable(it.key() + ' ' + it.value()) +
                    (taken == Taken::Refreshed ? ".\n" : "; it is proposed as ignored.\n"));
}

} // namespace

bool tellProblems(Console& console, const std::vector<CapturedCamera>& cameras)
{
    bool hasAny = false;
    for (const CapturedCamera& one : cameras)
        for (const QString& problem : one.problems) {
            console.err(one.camera.title() + ": " + printable(problem) + '\n');
            hasAny = true;
        }
    return hasAny;
}

int findCameraOf(World& world, const SearchOptions& options, const Inventory& inventory, const QString& name,
                 CapturedCamera& found)
{
    CameraSearch search(world, options, {true, false});
    const int code = search.run([&](const std::vector<ListedCamera>& cameras) {
        CameraSearch::Choice choice;
        for (const LineMatch& match : matchLine(inventory, cameras))
            if (match.wanted && match.wanted->name == name && match.camera && !match.isOther)
                choice.cameras.push_back(*match.camera);
        if (choice.cameras.empty())
            choice.misses += "The camera \"" + printable(name) + "\" of the inventory is not there.";
        return choice;
    });
    if (code != ExitWell)
        return code;
    found = nameCameras(search.cameras(), LineNaming::Name, {}).front();
    found.entry.name = name;
    found.entry.userName = found.camera.userName;
    found.problems.clear();
    return ExitWell;
}

int captureAll(World& world, const Inventory& inventory, const CaptureTask& task,
               std::vector<CapturedCamera>& cameras)
{
    capture(world.console, inventory, task, cameras);
    if (!Interrupt::isRequested()) {
        std::vector<ListedCamera> now;
        if (const int code = CameraSearch::findAll(world, now))
            return code;
        compareLooks(now, cameras);
    }
    const bool hasProblems = tellProblems(world.console, cameras);
    if (!hasProblems && !Interrupt::isRequested())
        return ExitWell;
    world.console.err(std::string("The inventory was not written.\n"));
    return Interrupt::isRequested() ? ExitInterrupted : ExitJobFailed;
}

int saveCaptured(Console& console, const Inventory& inventory, const std::vector<CapturedCamera>& cameras,
                 Taken taken)
{
    QString problem;
    const QByteArray text = taken == Taken::Refreshed ? withRefreshed(inventory, cameras.front(), problem)
                                                      : withCaptured(inventory, cameras, problem);
    if (problem.isEmpty())
        problem = saveInventory(inventory, text, taken == Taken::AsNew);
    if (!problem.isEmpty()) {
        console.err(problem + '\n');
        return ExitInputOutput;
    }
    for (const CapturedCamera& one : cameras)
        tellTaken(console, one, taken);
    if (!console.isJson())
        console.out(QString("%1 camera%2 in %3\n")
                        .arg(cameras.size())
                        .arg(cameras.size() == 1 ? "" : "s")
                        .arg(printable(inventory.path)));
    return ExitWell;
}

} // namespace companion
