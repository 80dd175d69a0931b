// An emulated camera as the program sees it, whatever line it hangs on. Everything may be called from any
// thread.
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Counters.h"
#include "camera_emulator/Description.h"
#include "camera_emulator/Faults.h"
#include "camera_emulator/Memory.h"

#include <optional>
#include <string>
#include <vector>

namespace emu
{

enum class StartCode
{
    Started,
    BadConfiguration,
    CannotBind // the place on the line cannot be taken
};

struct StartResult
{
    StartCode code = StartCode::Started;
    std::string message; // for people; empty when started
    explicit operator bool() const { return code == StartCode::Started; }
};

class Shell
{
public:
    virtual ~Shell() = default;

    // Takes its place on the line and answers from a thread of its own. Registers keep their values over
    // stop() and start(); control does not.
    virtual StartResult start() = 0;
    virtual void stop() = 0;
    // The place: an address, a link to a terminal.
    virtual std::string place() const = 0;
    // Seeds that could not be applied, a sentence each.
    virtual const std::vector<std::string>& seedProblems() const = 0;
    // Of those that were applied, and may not be read so.
    virtual const std::vector<std::string>& seedRemarks() const = 0;
    // Settings that change behind the back of hosts: JSON as in Seed.h. Gives what could not be applied.
    virtual std::vector<std::string> change(const std::string& json) = 0;
    virtual void setFaults(const Faults& faults) = 0;
    virtual Counters counters() const = 0;
    virtual void resetCounters() = 0;

    // The camera's registers from behind, without its rules. Addresses are in bytes, of any alignment.
    virtual Bytes peek(uint64_t address, size_t size) const = 0;
    virtual void poke(uint64_t address, const Bytes& data) = 0;
    // A node's value, where a register at a constant address stands behind it; nothing elsewhere.
    virtual std::optional<NodeValue> node(const std::string& name) const = 0;
    virtual const CameraConfig& config() const = 0;
    // The description that the configuration named.
    virtual const std::string& description() const = 0;
};

} // namespace emu
