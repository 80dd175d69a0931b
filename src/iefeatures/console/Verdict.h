// What became of a camera, and of one feature or register on it: the one set of words that all commands have,
// for people, for scripts and for the audit log. It stands this low because files and cameras come to the
// same verdicts, and because exit codes are made of them (ExitCode.h).
#pragma once

#include <QString>

#include <vector>

namespace companion
{

// Of a camera, or of the file by itself; each is graver than the one before.
enum class CameraVerdict
{
    Applied,        // the camera is as the file says
    Ready,          // it would be after an import
    Incomplete,     // a part of the file is not, or would not be, in the camera
    Incompatible,   // the file belongs to another camera, or names no version
    BadFile,        // it can be read, and is no such file
    UnreadableFile, // it cannot even be read
    NotStarted,     // nothing was begun: an interrupt came first, or there is no snapshot
    Failed,         // the camera did not answer, could not be opened, or could not keep its user set
    Interrupted
};

// "applied", "not started"
QString verdictWord(CameraVerdict verdict);
// Applied when there are none.
CameraVerdict gravest(const std::vector<CameraVerdict>& verdicts);

// Of what a features file names.
enum class EntryVerdict
{
    Applied,     // an import that was watched has given it the file's value
    Unchanged,   // it has the file's value; an import had nothing to change
    WouldChange, // an import would write it
    Coerced,     // as near to the value as the camera comes
    NotApplied,  // another value, or none can be read
    Skipped,     // imports leave it alone, or it cannot be read back
    NotWritable, // it differs, and an import could not write it now
    OutOfRange,  // it differs, and the camera would not take the value
    Absent,      // the camera has no such feature
    Broken,      // nothing that an import could apply, or it would have ended before this
    // It differs, and is nobody's setting:
    State,     // never written, tells one unit from another, or is a window of data
    Session,   // otherwise while a program streams from the camera
    Automatic, // moved by an automatic function
    Ignored    // changes by itself, or nobody wants to be told
};
constexpr EntryVerdict kEntryVerdicts[] = {
    EntryVerdict::Applied,    EntryVerdict::Unchanged, EntryVerdict::WouldChange, EntryVerdict::Coerced,
    EntryVerdict::NotApplied, EntryVerdict::Skipped,   EntryVerdict::NotWritable, EntryVerdict::OutOfRange,
    EntryVerdict::Absent,     EntryVerdict::Broken,    EntryVerdict::State,       EntryVerdict::Session,
    EntryVerdict::Automatic,  EntryVerdict::Ignored};

// "would change"
QString verdictWord(EntryVerdict verdict);
// Whether it is State, Session, Automatic or Ignored.
bool isNoSetting(EntryVerdict verdict);

} // namespace companion
