// One emulated camera behind a serial line: GenCP over a pseudo terminal, at one baud rate at a time. What
// the host sends while its end has another rate is rubbish to it. Everything may be called from any thread.
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Counters.h"
#include "camera_emulator/Description.h"
#include "camera_emulator/Faults.h"
#include "camera_emulator/Memory.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace emu
{

struct SerialConfig
{
    std::string link;          // a symbolic link to the terminal is put here; empty: none
    uint32_t baud = 9600;      // as a crashed host may have left it
    uint32_t supported = 0xFF; // rates, as bits of gencp::kBaudRates
    bool isPaced = false;      // answers take as long as the rate says
    unsigned noise = 0;        // every n-th answer has noise before it and a bit of it turned; 0: none
    unsigned dropped = 0;      // of every n-th answer a byte is missing
    uint32_t fastest = 921600; // what the line carries; bytes at faster rates are lost
};

class SerialCamera
{
public:
    SerialCamera(const CameraConfig& config, const SerialConfig& serial);
    ~SerialCamera(); // stops
    SerialCamera(const SerialCamera&) = delete;
    SerialCamera& operator=(const SerialCamera&) = delete;

    // Makes the terminal and answers from a thread of its own. What stands in the way is given as a sentence;
    // empty: started.
    std::string start();
    void stop();

    // The terminal's own name; empty until started.
    const std::string& path() const;
    const CameraConfig& config() const;
    const std::vector<std::string>& seedProblems() const;
    uint32_t baudRate() const;

    Bytes peek(uint64_t address, size_t size) const;
    void poke(uint64_t address, const Bytes& data);
    std::optional<NodeValue> node(const std::string& name) const;
    std::vector<std::string> change(const std::string& json);
    void setFaults(const Faults& faults);
    Counters counters() const;
    void resetCounters();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace emu
