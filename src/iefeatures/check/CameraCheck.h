// What an import of a features file would do to a camera, and what it has left there. Only reads: the cameras
// are opened for monitoring, which takes no control and works while another host has it (as long as that one
// does not forbid others to read).
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/cameras/NamePatterns.h"
#include "iefeatures/cameras/NamedNatures.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/console/Verdict.h"

#include "jobs/file/FeaturesFile.h"
#include "jobs/import/ImportIdentity.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace companion
{

enum class CheckMode
{
    Plan,  // before an import: what would it do?
    Verify // after one, or for an audit: is the camera as the file says?
};

struct CheckRule
{
    // Strict: what streaming programs and automatic functions set counts like any setting.
    // Ignored: features, "*" for any characters, that do not count, beside those that change by themselves.
    // Forced: of a plan, that no import should write what it would (WriteSafety.h) is passed over.
    CheckRule(CheckMode of, bool strict = false, const QStringList& ignore = {}, bool forced = false)
        : mode(of), isStrict(strict), ignored(changingByThemselves() + ignore), isForced(forced)
    {}

    CheckMode mode;
    bool isStrict;
    NamePatterns ignored;
    bool isForced;
    bool asksCategories = false;
};

// One plain feature of the file, or one register of a block.
struct EntryCheck
{
    QString feature;
    bool isRegister = false;
    std::optional<qint64> address; // of a register; none where the verdict is on the whole block
    QString selectors;             // of a register that is told of: "TriggerSelector=FrameStart"
    QString category;              // once it was asked for
    EntryVerdict verdict = EntryVerdict::Unchanged;
    QString fileValue;   // null: not known
    QString cameraValue; // as a file would have it; null: not read
    QString newValue;    // what would be written; null: nothing, or not known
    QString fileEntry;   // the names that an enumeration has for them; empty: not known
    QString cameraEntry;
    QString newEntry;
    QString reason;         // why the verdict is no better; empty where the camera does not tell
    QStringList warnings;   // where an import does not write what the file says, or writes without need
    bool isFaithful = true; // an import writes what the file says

    void judge(EntryVerdict of, const QString& why = {});
    // "Width", "Gain (GainSelector=Red, register 0x00013000)"
    QString title() const;
};

// Whether the file's value is not, or would not be, in the camera. What imports leave alone does not count,
// nor what is nobody's setting.
bool isAmiss(const EntryCheck& entry);

struct CameraCheck
{
    ListedCamera camera;
    CameraVerdict verdict = CameraVerdict::NotStarted;
    QString error;                    // why the verdict is none on the entries, a sentence; empty otherwise
    ie::IdentityComparisons identity; // all of them, in the order of the import
    std::vector<EntryCheck> entries;  // in the file's order; interrupted: those that were done

    std::optional<QStringList> changed = {}; // of what was written, in the end; titles
    QStringList inDoubt = {};                // what may have been written as well; titles

    QStringList notApplied() const; // the titles of what is amiss
};

// The error of an incompatible file: what it had to prove and has not, with both values.
QString incompatibleText(const ie::IdentityComparisons& identity);
// "board type", "firmware"
QString identityWord(ie::IdentityComparison::What what);

// What entries come to: `good`, or Incomplete when one is amiss.
CameraVerdict verdictOn(const std::vector<EntryCheck>& entries, CameraVerdict good);

// `mayGoOn` is asked before anything is done and before each entry, from the thread of the check. `inHand` is
// told behind it of each entry.
CameraCheck checkCamera(const ListedCamera& camera, const ie::FeaturesContent& file, const CheckRule& rule,
                        const std::function<bool()>& mayGoOn, const std::function<void()>& inHand = {});

// Why nothing is to be written to the camera that an import would write (WriteSafety.h), over a connection of
// its own that only reads; none where nothing speaks against it, or where the import's job tells it: a camera
// that cannot be asked, or is another one. Blocks until it has answered.
std::optional<CameraCheck> refusal(const ListedCamera& camera, const ie::FeaturesContent& file);

// All at the same time, in the order of `cameras`; one that fails does not stop the others. People are told
// how far it is. Blocks until all are over.
std::vector<CameraCheck> checkCameras(Console& console, const std::vector<ListedCamera>& cameras,
                                      const ie::FeaturesContent& file, const CheckRule& rule,
                                      const std::function<bool()>& mayGoOn);

} // namespace companion
