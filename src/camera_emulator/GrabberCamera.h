// A camera behind an emulated frame grabber: camera_emulator_gentl.cti finds it by its socket and shows it to
// GenTL consumers.
#pragma once

#include "camera_emulator/GenCpShell.h"
#include "camera_emulator/GrabberConfig.h"

#include <deque>
#include <map>
#include <string>
#include <thread>

namespace emu
{

class GrabberCamera final : public GenCpShell
{
public:
    GrabberCamera(const CameraConfig& config, const GrabberConfig& grabber);
    ~GrabberCamera() override;

    StartResult start() override;
    void stop() override; // as if the cable were pulled
    std::string place() const override { return m_grabber.socket; }
    bool isControlled() const;

private:
    struct Outgoing
    {
        int client;
        Reply reply;
    };
    std::string listen();
    void unlisten();
    void restartAsOrdered();
    void run();
    void accept();
    void take(int client);
    void answer(int client, const Bytes& message);
    void takePacket(int client, const Bytes& packet);
    std::string who() const;
    std::string url(unsigned index) const;
    void sendDue();
    void forget(int client);

    const GrabberConfig m_grabber;
    int m_listener = -1;
    int m_wake[2] = {-1, -1};
    std::thread m_thread;
    // The camera's thread alone, while it runs.
    std::vector<int> m_clients;
    std::deque<Outgoing> m_outgoing;
    std::optional<Clock::time_point> m_downUntil; // restarting
    int m_controller = -1;                        // a client; guarded by the responder's lock
};

} // namespace emu
