// Emulated USB3 Vision cameras, and the C interface over them.
#pragma once

#include "camera_emulator/Usb3Camera.h"
#include "support/OrdinaryUser.h"
#include "support/UsbStage.h"

#include <KXCameraControl/KXCameraControl.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace tests
{

class UsbFixture : public testing::Test
{
protected:
    UsbFixture()
    {
        setenv("KX_CAMERA_INTERFACES", "none", 1);
        unsetenv("KX_CAMERA_ADDRESSES");
        unsetenv("KX_CAMERA_SERIAL_PORTS");
        unsetenv("KX_CAMERA_USB");
    }

    emu::Usb3Camera& add(const std::string& serialNumber = "EMU0001", const emu::Usb3Config& usb = {},
                         emu::CameraConfig config = {})
    {
        config.serial = serialNumber;
        cameras.push_back(std::make_unique<emu::Usb3Camera>(config, usb, stage()));
        EXPECT_TRUE(cameras.back()->start());
        return *cameras.back();
    }

    static std::vector<KX_DeviceEntry> list(uint32_t mask = KX_TRANSPORT_USB3)
    {
        KX_DeviceEntry entries[16];
        uint32_t count = 0;
        EXPECT_EQ(KX_CC_EnumDevices(mask, entries, 16, &count), KX_OK);
        return {entries, entries + count};
    }

    static std::string text(const uint8_t* field) { return reinterpret_cast<const char*>(field); }

    // One for all tests of the process, as a machine has one.
    static UsbStage& stage()
    {
        static UsbStage instance;
        return instance;
    }

    std::vector<std::unique_ptr<emu::Usb3Camera>> cameras;
};

} // namespace tests
