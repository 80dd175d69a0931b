#include "iefeatures/running/ReadingProgress.h"

#include <chrono>
#include <new>
#include <system_error>

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
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::system_error&) { // the system gives no more threads: it is done without a word then
    }
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
    try {
        while (!m_changed.wait_for(lock, kTick, [this] { return m_isOver; }))
            m_board->tick();
    } catch (const std::bad_alloc&) { // what is told on the way is not worth the work's end
    }
}

} // namespace companion
