// Features of producers' systems and interfaces that have to have a value before cameras are looked for: some
// grabbers show theirs only then. The file that KX_GENTL_SETTINGS names has them, one a line:
//
//   # a comment
//   [grabber.cti]                    the producer's file name; what follows is for its system
//   SystemFeature = 1
//   [grabber.cti / *]                for all of its interfaces
//   DeviceControlProtocol = GenCP
//   [grabber.cti / Port A]           for the interface of this id
//   LinkSpeed = 6250
//   LinkReset                        a command: executed
//
// Lines are followed in the file's order, once, when the producer's process begins.
#pragma once

#include "KXCameraControl/ports/gentl/HostLink.h"

#include <optional>
#include <string>
#include <vector>

namespace kx
{

class Port;

struct ModuleFeature
{
    size_t line = 0; // in the file, from 1 on
    std::string name;
    std::optional<std::string> value; // as people write it; nothing: a command
};

struct ModuleSettings
{
    std::string producer;                 // file name
    std::optional<std::string> interface; // nothing: the system; "*": all interfaces
    std::vector<ModuleFeature> features;
};

// A sentence in `problems` for each line that is none of the above.
std::vector<ModuleSettings> parseSettings(const std::string& text, std::vector<std::string>& problems);

// Sets features of an open module; gives what did not work, a clause each. What stands above the ports knows
// nodes and says how, once, before the first search.
using ModuleSetter = std::vector<std::string> (*)(Port& module, const std::vector<ModuleFeature>& features);
void setModuleSetter(ModuleSetter setter);

// As HostLink::open(). A helper that was just started gets its settings first; who else wants a link waits
// for that.
std::unique_ptr<HostLink> openConfigured(const std::string& producer, gentl::Channel* loss, HostReply& reply);

// What the last start of a producer's process had against its settings.
std::vector<std::string> settingsProblems(const std::string& producer);

} // namespace kx
