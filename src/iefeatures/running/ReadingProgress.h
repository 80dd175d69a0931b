// How far commands are that read cameras without a job, told from a thread of its own while theirs is busy.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/running/ProgressBoard.h"

#include <condition_variable>
#include <memory>
#include <thread>
#include <vector>

namespace companion
{

class ReadingProgress
{
public:
    // `verb`: "checking". Nothing is told to scripts.
    ReadingProgress(Console& console, const std::vector<ListedCamera>& cameras, const QString& verb,
                    std::chrono::milliseconds silence = std::chrono::seconds(10));
    ~ReadingProgress();
    ReadingProgress(const ReadingProgress&) = delete;
    ReadingProgress& operator=(const ReadingProgress&) = delete;

    // From any thread. One more of all its features is in hand, and the one before done.
    void advance(size_t camera, int all);
    void end(size_t camera);

private:
    void run();

    std::unique_ptr<ProgressBoard> m_board; // null: scripts are told
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<int> m_inHand; // by camera
    bool m_isOver = false;
    std::thread m_thread;
};

} // namespace companion
