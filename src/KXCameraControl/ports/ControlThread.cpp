// Showing the camera in time that somebody still controls it.
#include "KXCameraControl/ports/ControlThread.h"

namespace kx
{

void ControlThread::start(std::chrono::milliseconds interval, Beat beat, LossHandler onLoss)
{
    reset();
    m_thread = std::thread([this, interval, beat = std::move(beat), onLoss = std::move(onLoss)] {
        run(interval, beat, onLoss);
    });
}

void ControlThread::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void ControlThread::reset()
{
    stop();
    m_stopping = false;
    m_loss.reset();
}

void ControlThread::reportLoss(KX_Status reason)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_loss)
            m_loss = reason;
    }
    m_changed.notify_all();
}

bool ControlThread::isLost() const
{
    const std::lock_guard lock(m_mutex);
    return m_loss.has_value();
}

void ControlThread::run(std::chrono::milliseconds interval, const Beat& beat, const LossHandler& onLoss)
{
    std::unique_lock lock(m_mutex);
    const auto isOver = [this] { return m_stopping || m_loss; };
    while (!m_changed.wait_for(lock, interval, isOver)) {
        lock.unlock();
        try {
            beat();
        } catch (...) { // no memory: there may be some at the next beat
        }
        lock.lock();
    }
    const std::optional<KX_Status> loss = m_loss;
    lock.unlock();
    if (loss)
        onLoss(*loss);
}

} // namespace kx
