// What an import of a features file would do to a camera, and what it has left there. Only reads: the cameras
// are opened for monitoring, which takes no control and works while another host has it (as long as that one
// does not forbid others to read).
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include "jobs/file/FeaturesFile.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace companion
{

enum class CheckMode
{
    Plan,  // before an import: what would it do?
    Verify // after one, or for an audit: is the camera as the file says?
};

enum class Verdict
{
    Same,        // the camera has the value
    Change,      // plan: an import would write it
    Coerced,     // verify: as near to the value as the camera comes
    NotApplied,  // verify: the camera has another value
    Skipped,     // imports leave it alone, or it cannot be read back
    NotWritable, // plan
    OutOfRange,  // plan
    Absent,      // the camera has no such feature
    Broken       // plan: nothing that an import could apply, or it would have ended before this
};

// One plain feature of the file, or one register of a block.
struct EntryCheck
{
    QString feature;
    bool isRegister = false;
    QString address; // of a register, as the file has it; empty where the verdict is on the whole block
    Verdict verdict = Verdict::Same;
    QString fileValue;
    QString cameraValue;    // as a file would have it; null: not read
    QString newValue;       // Change: what would be written
    QString reason;         // why the verdict is no better; empty where the camera does not tell
    QStringList warnings;   // where an import does not write what the file says, or writes without need
    bool isFaithful = true; // an import writes what the file says
};

// Whether the file's value is not, or would not be, in the camera. What imports leave alone does not count.
bool isAmiss(const EntryCheck& entry);

// What a file has to prove before anything is written, in the order of the import.
struct IdentityCheck
{
    enum class Verdict
    {
        Good,
        Tolerated, // differs, which the import lets pass
        Bad
    };
    QString what; // "version given", "version", "board type", "firmware", "model"
    Verdict verdict = Verdict::Good;
    QString fileValue;   // null: the file has none
    QString cameraValue; // null: not asked, or the camera does not tell; the suite's own for the version
};

struct CameraCheck
{
    enum class State
    {
        Interrupted,  // or never begun; `entries` are those that were done
        Failed,       // the camera could not be opened, or the line failed: `status`
        Incompatible, // the file belongs to another camera; there are no `entries`
        Checked
    };
    ListedCamera camera;
    State state = State::Interrupted;
    KX_Status status = KX_OK;
    std::vector<IdentityCheck> identity;
    std::vector<EntryCheck> entries; // in the file's order
};

// `mayGoOn` is asked before each entry, from the thread of the check.
CameraCheck checkCamera(const ListedCamera& camera, const ie::FeaturesContent& file, CheckMode mode,
                        const std::function<bool()>& mayGoOn);

// All at the same time, in the order of `cameras`; one that fails does not stop the others. Blocks until all
// are over.
std::vector<CameraCheck> checkCameras(const std::vector<ListedCamera>& cameras,
                                      const ie::FeaturesContent& file, CheckMode mode,
                                      const std::function<bool()>& mayGoOn);

} // namespace companion
