// Emulated cameras behind each transport, as the library under test finds them: on loopback addresses, behind
// terminals, behind the ports of a grabber's serial library, behind a producer, on an emulated USB.
#pragma once

#include "camera/ClserStage.h"
#include "camera/GentlStage.h"
#include "camera_emulator/EmulatedCamera.h"
#include "camera_emulator/SerialCamera.h"
#include "camera_emulator/Usb3Camera.h"
#include "support/LoopbackAddress.h"
#include "support/UsbStage.h"

#include <KXCameraControl/KXCameraControl.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tests
{

enum class Transport
{
    Gige,
    Usb3,
    Serial,
    Clser,
    GenTl
};

inline auto everyTransport()
{
    return testing::Values(Transport::Gige, Transport::Usb3, Transport::Serial, Transport::Clser,
                           Transport::GenTl);
}

inline std::string nameOf(Transport transport)
{
    const char* const names[] = {"gige", "usb3", "serial", "clser", "gentl"};
    return names[static_cast<size_t>(transport)];
}

// For INSTANTIATE_TEST_SUITE_P.
inline std::string transportName(const testing::TestParamInfo<Transport>& info)
{
    return nameOf(info.param);
}

// While it lives, nothing but its cameras is looked for. Helpers of the libraries begin with the first
// search: all cameras are added before it.
class AllTransports
{
public:
    AllTransports()
    {
        for (const char* name : {"KX_CAMERA_ADDRESSES", "KX_CAMERA_SERIAL_PORTS", "KX_CAMERA_USB"})
            unsetenv(name);
        m_producers.addProducer();
        m_libraries.addLibrary();
    }
    ~AllTransports()
    {
        for (const char* name : {"KX_CAMERA_ADDRESSES", "KX_CAMERA_SERIAL_PORTS"})
            unsetenv(name);
    }
    AllTransports(const AllTransports&) = delete;
    AllTransports& operator=(const AllTransports&) = delete;

    emu::Shell& add(Transport transport, emu::CameraConfig config = {})
    {
        emu::Shell& camera = make(transport, config);
        EXPECT_TRUE(camera.start()); // or has been
        EXPECT_EQ(camera.seedProblems(), std::vector<std::string>());
        return camera;
    }

    // What a search has for it.
    static KX_DeviceInfo record(const std::string& serial)
    {
        KX_DeviceEntry entries[32];
        uint32_t count = 0;
        EXPECT_EQ(KX_CC_EnumDevices(KX_TRANSPORT_ALL, entries, 32, &count), KX_OK);
        for (uint32_t i = 0; i < count; ++i)
            if (serialOf(entries[i].info) == serial)
                return entries[i].info;
        ADD_FAILURE() << "there is no camera " << serial;
        return {};
    }

private:
    static std::string serialOf(const KX_DeviceInfo& info)
    {
        const uint8_t* const field = info.transportType == KX_TRANSPORT_GIGE ? info.special.gige.serialNumber
                                     : info.transportType == KX_TRANSPORT_USB3
                                         ? info.special.usb3.serialNumber
                                         : info.special.cameraLink.serialNumber;
        return reinterpret_cast<const char*>(field);
    }

    emu::Shell& make(Transport transport, emu::CameraConfig& config)
    {
        switch (transport) {
        case Transport::Gige:
            config.address = freshLoopbackAddress();
            append("KX_CAMERA_ADDRESSES", config.address);
            return keep(std::make_unique<emu::EmulatedCamera>(config));
        case Transport::Usb3:
            return keep(std::make_unique<emu::Usb3Camera>(config, emu::Usb3Config(), usbStage()));
        case Transport::GenTl:
            return m_producers.addCamera(config.serial, {}, {}, config);
        default:
            return makeSerial(transport, config);
        }
    }

    // By links: umockdev has a /dev of its own.
    emu::Shell& makeSerial(Transport transport, const emu::CameraConfig& config)
    {
        emu::SerialConfig line;
        line.link = (m_producers.folder() / ("line_" + config.serial)).string();
        if (transport == Transport::Clser)
            m_libraries.addPort(line.link);
        else
            append("KX_CAMERA_SERIAL_PORTS", line.link);
        return keep(std::make_unique<emu::SerialCamera>(config, line));
    }

    emu::Shell& keep(std::unique_ptr<emu::Shell> camera)
    {
        m_cameras.push_back(std::move(camera));
        return *m_cameras.back();
    }

    static void append(const char* variable, const std::string& value)
    {
        const char* before = getenv(variable);
        setenv(variable, (before ? before + ("," + value) : value).c_str(), 1);
    }

    // One for all tests of the process, as a machine has one.
    static UsbStage& usbStage()
    {
        static UsbStage instance;
        return instance;
    }

    GentlStage m_producers;
    ClserStage m_libraries;
    std::vector<std::unique_ptr<emu::Shell>> m_cameras;
};

} // namespace tests
