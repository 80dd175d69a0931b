#include "iefeatures/replace/Replacement.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/cameras/Controller.h"
#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/imports/ImportProcedure.h"
#include "iefeatures/line/InventoryEdit.h"
#include "iefeatures/line/LineCheck.h"
#include "iefeatures/line/LineFiles.h"
#include "iefeatures/line/LineNetwork.h"
#include "iefeatures/network/AddressOwner.h"
#include "iefeatures/network/NetworkWrites.h"
#include "iefeatures/network/UserName.h"
#include "iefeatures/replace/Restart.h"

#include "camera_line/RecordTexts.h"

#include <algorithm>

namespace companion
{
namespace
{

const char* const kCommand = "line replace";

bool mayGoOn()
{
    return !Interrupt::isRequested();
}

bool isReachable(const ListedCamera& camera)
{
    return camera.device.nStatus != KX_AVAILABILITY_UNREACHABLE;
}

// Whether the interface that the camera was found at leads to the address.
bool isOfItsNetwork(const ListedCamera& camera, uint32_t address)
{
    const uint32_t own = camera.device.stDeviceInfo.special.gige.interfaceAddress;
    return own == 0 || ((address ^ own) & camera.interfaceMask) == 0;
}

bool differsInFirmwareAlone(const ie::IdentityComparisons& identity)
{
    return std::all_of(identity.begin(), identity.end(), [](const ie::IdentityComparison& one) {
        return one.outcome != ie::IdentityComparison::Outcome::Bad ||
               one.what == ie::IdentityComparison::What::Firmware;
    });
}

} // namespace

Replacement::Replacement(Console& console, const Look& look, const ReplaceTask& task,
                         const ReplacementJournal& journal)
    : m_console(console), m_look(look), m_task(task), m_journal(journal)
{}

const std::vector<Replacement::Step>& Replacement::steps()
{
    static const std::vector<Step> table = {
        {ReplaceStep::Address, &Replacement::reach},
        {ReplaceStep::Kind, &Replacement::compareKind},
        {ReplaceStep::Features, &Replacement::setFeatures},
        {ReplaceStep::Name, &Replacement::setName},
        {ReplaceStep::Kept, &Replacement::keep},
        {ReplaceStep::StartUp, &Replacement::startWithSet},
        {ReplaceStep::Restarted, &Replacement::restart},
        {ReplaceStep::Inventory, &Replacement::writeInventory},
    };
    return table;
}

QStringList Replacement::plan(const ListedCamera& camera) const
{
    const InventoryCamera& wanted = m_task.wanted;
    QStringList lines;
    const auto place = placeOf(wanted, camera);
    if (place && isOfItsNetwork(camera, place->address) && camera.address != wanted.address)
        lines += "the address " + ipPlaceText(*place) + " at once";
    else if (!isReachable(camera))
        lines += "a free address of its interface's network for the time being";
    QStringList files = {printable(wanted.featuresFile), printable(wanted.bagFile)};
    files.removeAll({});
    lines += files.isEmpty() ? QString("none of its features: the inventory names no file of them")
                             : "the features of " + files.join(" and ");
    lines += networkWords(networkTaskOf(wanted, camera));
    if (wanted.userSet.isEmpty())
        lines += "no user set: the inventory names none, so the features do not outlive a power cut";
    else
        lines += printable(wanted.userSet) + " as what it starts with" +
                 (m_task.isRestarted ? ", proven by a restart" : ", without a restart");
    return lines;
}

int Replacement::run(const ListedCamera& camera, const ReplacementRecord& record)
{
    m_camera = camera;
    m_record = record;
    for (const Step& one : steps()) {
        const int code = mayGoOn() ? (this->*one.action)() : int(ExitInterrupted);
        if (code != ExitWell) {
            tell("stopped before the step \"" + stepWord(one.step) +
                 "\" was done; the same command goes on from there.");
            return mayGoOn() ? code : int(ExitInterrupted);
        }
        if (const int failure = noteDone(one.step))
            return failure;
    }
    return finish();
}

void Replacement::tell(const QString& text) const
{
    m_console.err(printable(m_task.wanted.name) + ": " + printable(text) + '\n');
}

int Replacement::refuse(int code, const QString& text)
{
    tell(text);
    return code;
}

int Replacement::noteDone(ReplaceStep step)
{
    const QString word = stepWord(step);
    if (step == ReplaceStep::Restarted && !m_isProven)
        return ExitWell; // who goes on is to prove it
    if (!m_record.has(step))
        m_record.steps += word;
    if (const QString problem = m_journal.write(m_record); !problem.isEmpty())
        return refuse(ExitInputOutput, problem);
    m_console.object("replacement", {{"name", json(m_task.wanted.name)},
                                     {"camera", cameraJson(m_camera)},
                                     {"mac", jsonUnlessEmpty(m_camera.mac)},
                                     {"step", json(word)},
                                     {"proven", m_isProven}});
    tell(QString("%1 of %2 done: %3").arg(int(step) + 1).arg(steps().size()).arg(word));
    return ExitWell;
}

int Replacement::finish()
{
    if (const QString problem = m_journal.remove(); !problem.isEmpty())
        return refuse(ExitInputOutput, problem);
    tell("it is " + recordOf(m_camera).title() + " now" +
         (m_isProven ? ", proven over a restart." : "; not proven over a restart."));
    if (!m_isByBag)
        return ExitWell;
    tell("its firmware is another one than the files are of; \"iefeatures line adopt\" makes right what it "
         "has.");
    return ExitNotAllApplied;
}

// a. ------------------------------------------------------------------------------------------------------

int Replacement::reach()
{
    if (m_camera.device.stDeviceInfo.transportType != KX_TRANSPORT_GIGE)
        return ExitWell;
    const auto place = placeOf(m_task.wanted, m_camera);
    if (place && isOfItsNetwork(m_camera, place->address)) {
        const bool isThere = isReachable(m_camera) && m_camera.address == m_task.wanted.address;
        return isThere ? int(ExitWell) : force(*place, true);
    }
    if (isReachable(m_camera))
        return ExitWell;
    const uint32_t spare = freeAddress(m_camera);
    if (spare == 0)
        return refuse(ExitJobFailed,
                      "there is no free address in the network of its interface to reach it by.");
    return force({spare, m_camera.interfaceMask, 0}, false);
}

int Replacement::force(const IpPlace& place, bool isFinal)
{
    const QString owner = addressOwner(m_camera, place.address);
    if (!owner.isEmpty())
        return refuse(ExitJobFailed, "the address " + camera_line::dottedQuad(place.address) + ' ' + owner +
                                         "; nothing was written.");
    NetworkTask task;
    task.forced = place;
    if (const int code = writeNetworks(m_console, m_look, kCommand, m_task.audit, {{m_camera, task}}))
        return code;
    m_camera.device.stDeviceInfo.special.gige.ipAddress = place.address;
    m_camera.address = camera_line::dottedQuad(place.address);
    m_camera = findAgain(m_look, m_camera).value_or(m_camera);
    tell("reached at " + ipPlaceText(place) + (isFinal ? "" : ", for the time being"));
    return ExitWell;
}

// b. ------------------------------------------------------------------------------------------------------

int Replacement::compareKind()
{
    const InventoryCamera& wanted = m_task.wanted;
    QString problem;
    m_files = readLineFiles(m_task.inventory, wanted, true, problem);
    if (!problem.isEmpty())
        return refuse(ExitInputOutput, problem);
    if (wanted.featuresFile.isEmpty())
        return ExitWell;
    const CheckRule rule(CheckMode::Plan, false, m_task.inventory.ignoredOf(wanted));
    const CameraCheck check = checkCamera(m_camera, m_files->input.content, rule, mayGoOn);
    if (check.verdict <= CameraVerdict::Incomplete)
        return ExitWell;
    if (check.verdict != CameraVerdict::Incompatible)
        return refuse(exitCodeOf(check.verdict), check.error);
    const bool canTakeBag = differsInFirmwareAlone(check.identity) && !wanted.bagFile.isEmpty();
    m_isByBag = canTakeBag && m_task.acceptsFirmware;
    if (m_isByBag)
        return ExitWell;
    tell(check.error);
    return refuse(ExitIncompatible, canTakeBag
                                        ? "give the camera the firmware of the files, or take what of the "
                                          "bag it knows by name with --accept-firmware."
                                        : "the files are of another camera.");
}

// c. ------------------------------------------------------------------------------------------------------

int Replacement::setFeatures()
{
    if (m_isByBag) {
        const SharedImportFiles bag = readImportFiles(m_files->bag, {});
        const int code = importFiles(bag, false);
        return code == ExitNotAllApplied ? int(ExitWell) : code;
    }
    if (m_task.wanted.featuresFile.isEmpty())
        return m_files->bag.isEmpty() ? int(ExitWell) : importFiles(m_files, false);
    if (m_record.has(ReplaceStep::Features) && verify({}) == ExitWell)
        return ExitWell;
    // What was kept of another state proves nothing.
    m_record.steps = m_record.steps.mid(0, m_record.steps.indexOf(stepWord(ReplaceStep::Features)));
    return importFiles(m_files, true);
}

int Replacement::importFiles(const SharedImportFiles& files, bool isVerified)
{
    ImportTask task;
    task.command = kCommand;
    task.isVerified = isVerified;
    task.ignored = m_task.inventory.ignoredOf(m_task.wanted);
    task.audit = m_task.audit;
    task.style = m_task.style;
    task.isJson = m_task.isJson;
    return ImportProcedure(m_console, task).run({{m_camera, files}});
}

// `when`: as a sentence goes on; empty: nothing is told.
int Replacement::verify(const QString& when)
{
    if (m_isByBag || m_task.wanted.featuresFile.isEmpty())
        return ExitWell;
    const CheckRule rule(CheckMode::Verify, false, m_task.inventory.ignoredOf(m_task.wanted));
    const CameraCheck check = checkCamera(m_camera, m_files->input.content, rule, mayGoOn);
    const bool isGood = check.verdict == CameraVerdict::Applied;
    if (isGood || when.isEmpty())
        return isGood ? int(ExitWell) : int(ExitNotAllApplied);
    for (const EntryCheck& entry : check.entries)
        if (isAmiss(entry))
            tell(entry.title() + ": camera " + entry.cameraValue + ", file " + entry.fileValue + ' ' + when);
    if (!check.error.isEmpty())
        tell(check.error);
    return exitCodeOf(check.verdict);
}

int Replacement::setName()
{
    const NetworkTask task = networkTaskOf(m_task.wanted, m_camera);
    if (task.isEmpty())
        return ExitWell;
    const QStringList objections = networkObjections(m_camera, task);
    for (const QString& objection : objections)
        tell(objection);
    if (!objections.isEmpty())
        return ExitJobFailed;
    return writeNetworks(m_console, m_look, kCommand, m_task.audit, {{m_camera, task}});
}

// d. ------------------------------------------------------------------------------------------------------

int Replacement::keep()
{
    const QString& set = m_task.wanted.userSet;
    if (set.isEmpty() || m_record.has(ReplaceStep::Kept))
        return ExitWell;
    QString problem = saveUserSet(m_camera, {set, false}).problem;
    if (problem.isEmpty())
        problem = loadUserSet(m_camera, set);
    if (!problem.isEmpty())
        return refuse(ExitJobFailed, printable(set) + " does not keep its state: " + problem);
    const int code = verify("behind loading " + set);
    if (code == ExitNotAllApplied)
        tell(set + " keeps less than it should; it does not start with it.");
    return code;
}

int Replacement::startWithSet()
{
    const QString& set = m_task.wanted.userSet;
    if (set.isEmpty() || m_record.has(ReplaceStep::StartUp))
        return ExitWell;
    const QString problem = startWithUserSet(m_camera, set);
    return problem.isEmpty() ? int(ExitWell)
                             : refuse(ExitJobFailed, "it does not start with " + set + ": " + problem);
}

int Replacement::restart()
{
    if (m_record.has(ReplaceStep::Restarted)) {
        m_isProven = m_task.isRestarted;
        return ExitWell;
    }
    const bool isAskedFor = m_task.isRestarted && !m_task.wanted.userSet.isEmpty();
    const auto canRestart = isAskedFor ? hasRestart(m_camera) : std::make_optional(false);
    if (!canRestart)
        return refuse(ExitJobFailed, "it does not answer before its restart.");
    if (!*canRestart) {
        tell("not proven over a restart: switch it off and on, then \"iefeatures line check\" tells.");
        return ExitWell;
    }
    tell("restarts");
    const QString problem = restartCamera(m_camera, m_look, mayGoOn);
    if (!problem.isEmpty())
        return refuse(ExitJobFailed, problem);
    if (const int code = awaitReturn())
        return code;
    if (!isReachable(m_camera)) {
        tell("it is back, in a network that this host is not in: its features were not looked at.");
        return ExitWell;
    }
    if (const int code = compareNames())
        return code;
    const int code = verify("behind the restart");
    const bool hasBagAlone = m_task.wanted.hasBagAlone();
    m_isProven = code == ExitWell && !m_isByBag && !hasBagAlone;
    if (hasBagAlone)
        tell("there is no features file to compare its features with behind the restart.");
    return code;
}

bool Replacement::isAsItShallBe(const ListedCamera& camera) const
{
    const auto place = placeOf(m_task.wanted, camera);
    const bool isAtItsPlace = !place || camera.address == m_task.wanted.address;
    const bool isNamed = userNameRoom(camera) == 0 || camera.userName == m_task.wanted.nameInCamera();
    const bool isFar = place && !isOfItsNetwork(camera, place->address);
    return isAtItsPlace && isNamed && (isFar || camera.device.nStatus == KX_AVAILABILITY_FREE);
}

// Under its name and address; transports that show a name only behind a restart show it now.
int Replacement::awaitReturn()
{
    const auto now = awaitCamera(m_camera, m_look, m_task.patience, mayGoOn,
                                 [this](const ListedCamera& camera) { return isAsItShallBe(camera); });
    if (now) {
        m_camera = *now;
        return ExitWell;
    }
    if (!mayGoOn())
        return ExitInterrupted;
    const auto other = findAgain(m_look, m_camera);
    return refuse(ExitJobFailed, other ? "behind its restart it is \"" + other->userName + "\" at " +
                                             other->address + ", " + other->status + '.'
                                       : QString("it did not come back from its restart."));
}

int Replacement::compareNames()
{
    LineMatch match{&m_task.wanted, m_camera, LineState::InOrder, {}};
    compareNetwork(askCameras(mayGoOn), match);
    for (const LineDifference& one : match.differences)
        tell(one.what + " is " + one.found + " behind the restart, should be " + one.expected + '.');
    return match.differences.empty() ? ExitWell : ExitNotAllApplied;
}

// e. ------------------------------------------------------------------------------------------------------

int Replacement::writeInventory()
{
    const InventoryCamera& before = m_task.wanted;
    InventoryCamera now = before;
    now.mac = m_camera.mac;
    now.guid = m_camera.guid;
    now.serial = m_camera.serial;
    if (!before.interfaceName.isEmpty() && !m_camera.interfaceName.isEmpty())
        now.interfaceName = m_camera.interfaceName;
    now.retired.removeAll(now.mac);
    if (!before.mac.isEmpty() && before.mac != now.mac && !now.retired.contains(before.mac))
        now.retired += before.mac;
    const std::vector<InventoryChange> changes = changesBetween(before, now);
    if (changes.empty())
        return ExitWell;
    AuditEntry entry;
    entry.command = kCommand;
    entry.camera = m_camera;
    entry.userSet = before.userSet;
    entry.changes = {{"inventory: " + before.name, false, 0,
                      before.mac.isEmpty() ? before.serial : before.mac,
                      now.mac.isEmpty() ? now.serial : now.mac}};
    AuditTrail trail(m_console, m_task.audit);
    if (!trail.begin({entry}))
        return ExitInputOutput;
    QString problem;
    const QByteArray text = editedText(m_task.inventory, changes, {}, problem);
    if (problem.isEmpty())
        problem = saveInventory(m_task.inventory, text);
    entry.outcome = problem.isEmpty() ? CameraVerdict::Applied : CameraVerdict::Failed;
    trail.end({entry});
    return problem.isEmpty() ? int(ExitWell) : refuse(ExitInputOutput, problem);
}

} // namespace companion
