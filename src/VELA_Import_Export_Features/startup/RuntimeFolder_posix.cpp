#include "startup/RuntimeFolder_posix.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace Platform
{
namespace
{

// Empty: it can be trusted.
std::string whyNot(const FolderCandidate& folder)
{
    if (folder.isMade)
        mkdir(folder.path.c_str(), 0700); // what cannot be made shows below
    struct stat found = {};
    if (lstat(folder.path.c_str(), &found) != 0)
        return std::strerror(errno);
    if (!S_ISDIR(found.st_mode))
        return "it is no folder, or a link to one";
    if (found.st_uid != geteuid())
        return "it belongs to another user";
    if (found.st_mode & (S_IWGRP | S_IWOTH))
        return "other users can write to it";
    return {};
}

std::vector<FolderCandidate> candidates()
{
    std::vector<FolderCandidate> folders;
    if (const char* given = std::getenv("XDG_RUNTIME_DIR"); given && *given)
        folders.push_back({given, false});
    folders.push_back({"/tmp/vela-" + std::to_string(geteuid()), true});
    if (const char* home = std::getenv("HOME"); home && *home) {
        const std::string cache = std::string(home) + "/.cache";
        mkdir(cache.c_str(), 0700);
        folders.push_back({cache + "/vela", true});
    }
    return folders;
}

} // namespace

FolderChoice chooseFolder(const std::vector<FolderCandidate>& candidates)
{
    FolderChoice choice;
    for (const FolderCandidate& candidate : candidates) {
        const std::string reason = whyNot(candidate);
        if (reason.empty()) {
            choice.path = candidate.path;
            break;
        }
        choice.complaint += "The folder " + candidate.path + " is not used for the lock: " + reason + ".\n";
    }
    if (choice.path.empty())
        choice.complaint += "No folder for the lock: a second copy is not noticed.\n";
    return choice;
}

std::string runtimeFolder()
{
    static std::string told;
    const FolderChoice choice = chooseFolder(candidates());
    if (choice.complaint != told)
        std::fputs(choice.complaint.c_str(), stderr);
    told = choice.complaint;
    return choice.path;
}

} // namespace Platform
