// When a camera that does not answer counts as lost, though its line is there: a job would ask it for every
// feature, again and again.
#pragma once

#include <chrono>

namespace kx
{

// One caller at a time. GigE Vision needs none: it has a heartbeat, and a beat that nobody answers is a loss.
class Silence
{
public:
    using Clock = std::chrono::steady_clock;

    // Something that the camera has sent was understood, be it late or a refusal.
    void end() { m_requests = 0; }

    // A request that began then has gone unanswered in all its tries. True: that was one too many.
    bool isTooLong(Clock::time_point begin, Clock::time_point now = Clock::now())
    {
        if (m_requests++ == 0)
            m_since = begin;
        return m_requests >= kRequests && now - m_since >= kShortest;
    }

private:
    // As cameras are gone from lists after two looks without them.
    static constexpr unsigned kRequests = 2;
    // Short time-outs, and lines that refuse at once, give a camera time all the same.
    static constexpr std::chrono::seconds kShortest{1};

    unsigned m_requests = 0; // in a row
    Clock::time_point m_since;
};

} // namespace kx
