// One emulated camera on an address of its own, and a host that talks to it.
#pragma once

#include "camera/GvcpClient.h"
#include "camera_emulator/EmulatedCamera.h"
#include "support/LoopbackAddress.h"

#include <gtest/gtest.h>

inline emu::CameraConfig freshConfig()
{
    emu::CameraConfig config;
    config.address = tests::freshLoopbackAddress();
    config.manufacturer = "Maker";
    config.model = "Model-7";
    config.serial = "SN-1";
    config.userName = "Left";
    config.firmware = "4.5.6";
    return config;
}

class EmulatorFixture : public testing::Test
{
protected:
    explicit EmulatorFixture(const emu::CameraConfig& config = freshConfig())
        : camera(config), host(config.address), other(config.address)
    {
        const auto started = camera.start();
        EXPECT_TRUE(started) << started.message;
    }

    // A register as `host` reads it.
    uint32_t readWord(uint32_t address)
    {
        const auto values = gvcp::parseRegisterValues(host.read({address}).payload, 1);
        return values ? values->front() : 0xDEADBEEF;
    }

    emu::EmulatedCamera camera;
    GvcpClient host;
    GvcpClient other;
};
