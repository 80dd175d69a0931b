// The thread that keeps a connection alive and notices its loss.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace kx
{

class ControlThread
{
public:
    ~ControlThread() { stop(); }

    using Beat = std::function<void()>;
    using LossHandler = std::function<void(KX_Status)>;

    // Calls `beat` on a thread of its own every `interval`, until stop() or a reported loss, which is passed
    // on to `onLoss` once, on that thread.
    void start(std::chrono::milliseconds interval, Beat beat, LossHandler onLoss);
    // Waits for a beat or a handler that is running. A loss stays known until reset().
    void stop();
    void reset();

    // The connection was found lost, by a beat or by a call. Only the first reason counts.
    void reportLoss(KX_Status reason);
    bool isLost() const;

private:
    void run(std::chrono::milliseconds interval, const Beat& beat, const LossHandler& onLoss);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_stopping = false;
    std::optional<KX_Status> m_loss;
    std::thread m_thread;
};

} // namespace kx
