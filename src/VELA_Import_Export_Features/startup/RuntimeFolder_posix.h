// Where the lock and the socket of this user's session lie. Only a folder that nobody else can write to is
// used: who could put a file there could keep the program from starting, or be asked in place of its window.
#pragma once

#include <string>
#include <vector>

namespace Platform
{

struct FolderCandidate
{
    std::string path;
    bool isMade; // made with mode 0700 when it is missing; otherwise it has to be there
};

struct FolderChoice
{
    std::string path;      // empty: no candidate can be trusted
    std::string complaint; // what is wrong with those before it, for a person; empty: nothing
};

// The first candidate that is a folder of this user's which nobody else can write to. A link is none: it may
// be led elsewhere later.
FolderChoice chooseFolder(const std::vector<FolderCandidate>& candidates);

// The one for this process: XDG_RUNTIME_DIR where it is set, then /tmp/vela-<user id>, then .cache/vela in
// the home folder. A complaint is printed on the standard error, once. Empty when none will do. For the main
// thread.
std::string runtimeFolder();

} // namespace Platform
