// The registers behind the nodes, as their readers and writers see them.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace kx
{

// A register as it is asked for.
struct RegisterPlace
{
    uint64_t address = 0;
    size_t size = 0;           // at least 1
    bool isByRegister = false; // by the register commands, not by those for memory; 4 bytes then

    bool operator<(const RegisterPlace& other) const
    {
        return std::tie(address, size, isByRegister) <
               std::tie(other.address, other.size, other.isByRegister);
    }
};

// Implemented by the owner of the line, and by what stands between it and the nodes.
class RegisterLine
{
public:
    virtual ~RegisterLine() = default;
    // Statuses of the public header. `size` is at least 1.
    virtual KX_Status readBlock(uint64_t address, void* data, size_t size) = 0;
    virtual KX_Status writeBlock(uint64_t address, const void* data, size_t size) = 0;
    virtual KX_Status readRegister(uint64_t address, uint32_t& value) = 0;
    virtual KX_Status writeRegister(uint64_t address, uint32_t value) = 0;
    // How the reads that follow may be answered; lines that remember nothing need not know.
    enum class Freshness
    {
        Keep, // from memory, and kept in memory
        Call, // kept no longer than the running call
        Wire  // always from the camera
    };
    virtual void setFreshness(Freshness) {}
    // How long Freshness::Keep may answer from memory.
    virtual std::chrono::milliseconds keepTime() const { return std::chrono::milliseconds(300); }
    virtual std::string lineError() const = 0;

    // How many registers one request can hold; 1: this line has no batches.
    virtual size_t registersPerRequest() const { return 1; }
    // As many by one request, in the order of the addresses. A refusal of one refuses all.
    virtual KX_Status readRegisters(const std::vector<uint32_t>& /*addresses*/,
                                    std::vector<uint32_t>& /*values*/)
    {
        return KX_E_NOT_SUPPORTED;
    }
    // Whether a register's number is what stands at its address in memory, highest byte first.
    virtual bool registersAreMemory() const { return true; }
};

} // namespace kx
