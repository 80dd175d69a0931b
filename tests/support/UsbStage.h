// A USB of its own for this process and its children: the real libusb meets emulated devices as
// /dev/bus/usb/BBB/DDD, since umockdev brings every ioctl to this process, which plays the kernel's usbfs.
// Linking it is enough: a program that was started without umockdev's library before all others starts itself
// again with it. What hangs on other buses of this machine is not seen.
#pragma once

#include "camera_emulator/UsbBus.h"

#include <memory>
#include <string>

namespace tests
{

// May be called from any thread. One at a time in a process.
class UsbStage final : public emu::UsbBus
{
public:
    UsbStage();
    ~UsbStage() override; // what is still plugged in is gone
    UsbStage(const UsbStage&) = delete;
    UsbStage& operator=(const UsbStage&) = delete;

    // Tells the system's listeners ("add", "remove"), as udev does.
    std::string plug(emu::UsbFunction& function) override;
    void unplug(emu::UsbFunction& function) override;
    void askAgain(emu::UsbFunction& function, std::chrono::milliseconds later) override;

    // Which ordinary users may open the device at all; root always may.
    void setOpenable(const std::string& location, bool isOpenable);

    struct State;

private:
    std::unique_ptr<State> m_state;
};

} // namespace tests
