// A network of the test's own: namespaces with emulated cameras in them, and wires between them.
#pragma once

#include "camera_emulator/EmulatedCamera.h"

#include <sched.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tests
{

// In the network of the calling thread.
inline bool runInNetwork(const std::string& command)
{
    return std::system(("exec 2>/dev/null; " + command).c_str()) == 0; // NOLINT(cert-env33-c): of this file
}

// Before there is any other thread: an ordinary user gets a network of his own by being root in it. False:
// the system has none for this user, or no ip (Debian package iproute2).
inline bool enterOwnNetwork()
{
    return unshare(geteuid() == 0 ? CLONE_NEWNET : CLONE_NEWUSER | CLONE_NEWNET) == 0 &&
           runInNetwork("ip link >/dev/null");
}

// The cameras' end of a wire. Namespaces belong to threads, and so do the sockets that they open.
class CameraSide
{
public:
    // `wire`: its end at this host. `more`: what else is to be set up there.
    CameraSide(const std::string& wire, const std::vector<emu::CameraConfig>& configs,
               const std::string& more)
    {
        for (const emu::CameraConfig& config : configs)
            m_cameras.push_back(std::make_unique<emu::EmulatedCamera>(config));
        m_thread = std::thread([this, wire, more] { live(wire, more); });
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isReady; });
    }
    ~CameraSide()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isOver = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }
    bool isGood() const { return m_isGood; }
    emu::EmulatedCamera& camera(size_t index) { return *m_cameras[index]; }

    // On the thread that has the cameras' network.
    void there(const std::function<void()>& work)
    {
        std::unique_lock lock(m_mutex);
        m_work = work;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_work; });
    }

private:
    void live(const std::string& wire, const std::string& more)
    {
        const std::string host = std::to_string(getpid()); // the main thread's network
        m_isGood = unshare(CLONE_NEWNET) == 0 && runInNetwork("ip link set lo up") &&
                   runInNetwork("ip link add cam type veth peer name " + wire + " netns " + host) &&
                   runInNetwork("ip link set cam up") &&
                   runInNetwork("echo 0 > /proc/sys/net/ipv4/conf/all/rp_filter") &&
                   runInNetwork("echo 0 > /proc/sys/net/ipv4/conf/cam/rp_filter") && runInNetwork(more);
        for (const auto& camera : m_cameras)
            m_isGood = m_isGood &&
                       runInNetwork("ip address add " + camera->config().address + "/24 dev cam") &&
                       camera->start();
        std::unique_lock lock(m_mutex);
        m_isReady = true;
        m_changed.notify_all();
        while (!m_isOver) {
            m_changed.wait(lock, [this] { return m_isOver || m_work; });
            if (m_work)
                m_work();
            m_work = nullptr;
            m_changed.notify_all();
        }
        for (const auto& camera : m_cameras)
            camera->stop();
        runInNetwork("ip link delete cam"); // a namespace that nobody is in goes some time later
    }

    std::vector<std::unique_ptr<emu::EmulatedCamera>> m_cameras;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::function<void()> m_work;
    bool m_isReady = false;
    bool m_isOver = false;
    bool m_isGood = false;
    std::thread m_thread;
};

} // namespace tests
