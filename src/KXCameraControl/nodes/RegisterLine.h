// The registers behind the nodes, as their readers and writers see them.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace kx
{

// Implemented by the owner of the line.
class RegisterLine
{
public:
    // How long Freshness::Keep may answer from memory.
    static constexpr std::chrono::milliseconds keepTime{300};

    virtual ~RegisterLine() = default;
    // Statuses of the public header. `size` is at least 1.
    virtual KX_Status readBlock(uint64_t address, void* data, size_t size) = 0;
    virtual KX_Status writeBlock(uint64_t address, const void* data, size_t size) = 0;
    virtual KX_Status readRegister(uint64_t address, uint32_t& value) = 0;
    virtual KX_Status writeRegister(uint64_t address, uint32_t value) = 0;
    // How the reads that follow may be answered.
    enum class Freshness
    {
        Keep, // from memory, and kept in memory
        Call, // kept no longer than the running call
        Wire  // always from the camera
    };
    virtual void setFreshness(Freshness freshness) = 0;
    virtual std::string lineError() const = 0;
};

} // namespace kx
