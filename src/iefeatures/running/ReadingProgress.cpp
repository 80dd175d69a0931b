#include "iefeatures/running/ReadingProgress.h"

#include <chrono>

namespace companion
{
namespace
{

constexpr std::chrono::milliseconds kTick{100};

} // namespace

ReadingProgress::ReadingProgress(Console& console, const std::vector<ListedCamera>& cameras,
                                 const QString& verb, std::chrono::milliseconds silence)
    : m_inHand(cameras.size())
{
    if (console.isJson())
        return;
    m_board = std::make_unique<ProgressBoard>(console, titlesOf(cameras), silence);
    for (size_t i = 0; i < cameras.size(); ++i)
        m_board->begin(i, verb);
    m_thread = std::thread([this] { run(); });
}

ReadingProgress::~ReadingProgress()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isOver = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void ReadingProgress::advance(size_t camera, int all)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_board)
        m_board->advance(camera, {m_inHand[camera]++, all});
}

void ReadingProgress::end(size_t camera)
{
    if (m_board)
        m_board->end(camera, "done", false);
}

void ReadingProgress::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_changed.wait_for(lock, kTick, [this] { return m_isOver; }))
        m_board->tick();
}

} // namespace companion
