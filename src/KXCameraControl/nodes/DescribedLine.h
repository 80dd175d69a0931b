// A line without a camera: it holds what was written to it and refuses every other read, so that what is
// worked out over it comes from the description alone.
#pragma once

#include "KXCameraControl/nodes/RegisterLine.h"

#include <map>

namespace kx
{

class DescribedLine : public RegisterLine
{
public:
    KX_Status readBlock(uint64_t address, void* data, size_t size) override;
    KX_Status writeBlock(uint64_t address, const void* data, size_t size) override;
    KX_Status readRegister(uint64_t address, uint32_t& value) override;
    KX_Status writeRegister(uint64_t address, uint32_t value) override;
    void setFreshness(Freshness freshness) override { m_freshness = freshness; }
    std::string lineError() const override { return "only the camera can tell"; }

    void forget() { m_bytes.clear(); }

private:
    std::map<uint64_t, uint8_t> m_bytes;
    Freshness m_freshness = Freshness::Keep;
};

} // namespace kx
