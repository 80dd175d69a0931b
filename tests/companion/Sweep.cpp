#include "companion/Sweep.h"

#include "gvcp/Gvcp.h"
#include "support/Cable.h"
#include "support/Held.h"
#include "support/LoopbackAddress.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <thread>

namespace tests
{
namespace
{

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Three tries of 200 ms each, and again for whoever finds out that a connection is lost; and the machine may
// be slow.
constexpr milliseconds kTimeOuts{3 * 600};
constexpr milliseconds kPending{20000}; // that a camera may ask for
constexpr milliseconds kSlowMachine{10000};
constexpr milliseconds kAway{800}; // that a reboot takes: longer than all tries of a request

constexpr uint64_t kBegin = 0x10000; // of the registers that are settings
constexpr size_t kSize = 0x20000;

// What was held before is all that is held soon. Threads of the run before may not have ended when it was
// counted.
void expectGivenBack(const Held& before)
{
    const auto end = Clock::now() + kSlowMachine;
    while (!Held().isNoMoreThan(before) && Clock::now() < end)
        std::this_thread::sleep_for(milliseconds(2));
    EXPECT_TRUE(Held().isNoMoreThan(before)) << Held().text() << " instead of " << before.text();
}

emu::Faults faultsOf(const Trouble& trouble, unsigned request)
{
    emu::Faults faults;
    switch (trouble.kind) {
    case Trouble::Kind::Mishap:
        faults.accident = emu::Accident{trouble.mishap, request, milliseconds(300)};
        break;
    case Trouble::Kind::Stolen:
        faults.stealControlAfter = request;
        break;
    case Trouble::Kind::Silent:
    case Trouble::Kind::Rebooted:
    case Trouble::Kind::Moved:
        faults.silence = emu::Silence{request, std::nullopt};
        break;
    }
    return faults;
}

} // namespace

const std::vector<Trouble>& troubles()
{
    using Kind = Trouble::Kind;
    using emu::Mishap;
    static const std::vector<Trouble> all{
        {"a request lost", Kind::Mishap, Mishap::RequestLost, kTimeOuts},
        {"an answer lost", Kind::Mishap, Mishap::AnswerLost, kTimeOuts},
        {"an answer late", Kind::Mishap, Mishap::AnswerLate, kTimeOuts},
        {"an answer twice", Kind::Mishap, Mishap::AnswerTwice, kTimeOuts},
        {"an answer with another id", Kind::Mishap, Mishap::AnswerWithOtherId, kTimeOuts},
        {"a short answer", Kind::Mishap, Mishap::AnswerShort, kTimeOuts},
        {"a long answer", Kind::Mishap, Mishap::AnswerLong, kTimeOuts},
        {"garbage", Kind::Mishap, Mishap::AnswerGarbage, kTimeOuts},
        {"a refusal", Kind::Mishap, Mishap::Refused, kTimeOuts},
        {"busy", Kind::Mishap, Mishap::Busy, kTimeOuts},
        {"pending for ever", Kind::Mishap, Mishap::PendingForEver, 3 * kPending},
        {"deaf from then on", Kind::Mishap, Mishap::DeafFromThenOn, kTimeOuts},
        {"silent for ever", Kind::Silent, Mishap::RequestLost, kTimeOuts},
        {"control stolen", Kind::Stolen, Mishap::RequestLost, kTimeOuts},
        {"rebooted", Kind::Rebooted, Mishap::RequestLost, kTimeOuts},
        {"moved", Kind::Moved, Mishap::RequestLost, kTimeOuts},
    };
    return all;
}

Settings Settings::of(const emu::Shell& camera)
{
    Settings settings;
    settings.m_bytes = camera.peek(kBegin, kSize);
    return settings;
}

void Settings::putInto(emu::Shell& camera) const
{
    camera.poke(kBegin, m_bytes);
}

std::vector<uint64_t> Settings::differences(const Settings& other) const
{
    std::vector<uint64_t> found;
    for (size_t i = 0; i < m_bytes.size(); i += 4)
        if (!std::equal(m_bytes.begin() + static_cast<ptrdiff_t>(i),
                        m_bytes.begin() + static_cast<ptrdiff_t>(i + 4),
                        other.m_bytes.begin() + static_cast<ptrdiff_t>(i)))
            found.push_back(kBegin + i);
    return found;
}

uint64_t Sweep::countRequests(const SweptJob& job)
{
    job.prepare();
    m_camera.resetCounters();
    const auto begin = Clock::now();
    const Result run = job.run();
    m_ownTime = std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
    const emu::Counters counters = m_camera.counters(); // objections may ask the camera, too
    const std::vector<std::string> objections = job.objections(run);
    EXPECT_TRUE(run.code == 0 && objections.empty())
        << job.name << " without trouble: " << ::testing::PrintToString(objections) << run.out << run.err;
    return counters.requests() - counters.discovery;
}

// Who was cut off keeps control for as long as the heartbeat time says.
void Sweep::awaitFreeCamera()
{
    m_camera.setFaults({});
    if (!m_onNetwork)
        return;
    m_onNetwork->releaseControl();
    const auto end = Clock::now() + kSlowMachine;
    while (m_onNetwork->isControlled() && Clock::now() < end)
        std::this_thread::sleep_for(milliseconds(2));
    EXPECT_FALSE(m_onNetwork->isControlled()) << "control was not given back";
}

void Sweep::over(const SweptJob& job, size_t runs)
{
    const uint64_t requests = countRequests(job);
    const char* const wish = std::getenv("KX_SWEEP");
    const bool isLong = wish != nullptr && *wish != '\0';
    const uint64_t step =
        std::max<uint64_t>(1, !isLong                      ? requests / std::max<size_t>(1, runs)
                              : std::string(wish) == "all" ? 1
                                                           : std::strtoull(wish, nullptr, 10));
    // What a camera does behind its last setting, while control is given back, nobody can know.
    const auto end = [&](const Trouble& trouble) {
        return trouble.kind == Trouble::Kind::Rebooted ? requests - 2 : requests;
    };
    const char* const only = std::getenv("KX_SWEEP_TROUBLE");
    size_t which = 0;
    for (const Trouble& trouble : troubles()) {
        const uint64_t first =
            1 + which++ * step / troubles().size(); // so that all of them meet many requests
        if (only != nullptr && std::string(only).find(trouble.name) == std::string::npos)
            continue;
        if (!isLong && (trouble.mishap == emu::Mishap::PendingForEver || (runs == 0 && which % 3 != 0)))
            continue; // 20 s each
        if (!m_onNetwork && (trouble.kind == Trouble::Kind::Stolen || trouble.kind == Trouble::Kind::Moved))
            continue;
        for (uint64_t request = first; request <= end(trouble); request += step) {
            SCOPED_TRACE(job.name + ", " + trouble.name + " at request " + std::to_string(request) + " of " +
                         std::to_string(requests));
            runOnce(job, trouble, request);
        }
    }
}

void Sweep::runOnce(const SweptJob& job, const Trouble& trouble, uint64_t request)
{
    using Kind = Trouble::Kind;
    job.prepare();
    const Settings powerUp = Settings::of(m_camera);
    Held before;
    before.files += trouble.kind == Kind::Rebooted ? job.filesOfReturn : 0;
    std::unique_ptr<emu::EmulatedCamera> elsewhere;
    Result run;
    m_camera.setFaults(faultsOf(trouble, static_cast<unsigned>(request)));
    const auto begin = Clock::now();
    {
        m_camera.resetCounters();
        const auto isTime = [this, request] {
            const emu::Counters counters = m_camera.counters();
            return counters.requests() - counters.discovery >= request;
        };
        std::unique_ptr<Cable> cable;
        if (trouble.kind == Kind::Rebooted)
            cable = std::make_unique<Cable>(isTime, [this, &powerUp, &job] {
                m_camera.stop();
                std::this_thread::sleep_for(kAway);
                job.lose ? job.lose() : powerUp.putInto(m_camera);
                m_camera.setFaults({});
                EXPECT_TRUE(m_camera.start());
            });
        if (trouble.kind == Kind::Moved)
            cable = std::make_unique<Cable>(isTime, [&] {
                m_camera.stop();
                emu::CameraConfig config = m_camera.config();
                config.address = freshLoopbackAddress();
                elsewhere = std::make_unique<emu::EmulatedCamera>(config);
                EXPECT_TRUE(elsewhere->start());
            });
        run = job.run();
    }
    const auto took = std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
    EXPECT_LE(took.count(), (trouble.patience + job.waiting + 5 * m_ownTime + kSlowMachine).count());

    const std::vector<std::string> objections = job.objections(run);
    EXPECT_TRUE(objections.empty()) << ::testing::PrintToString(objections) << "\nexit " << run.code << '\n'
                                    << run.out << run.err;
    ++m_endings[trouble.name][run.code];
    ++m_runs;

    if (elsewhere) {
        elsewhere.reset();
        EXPECT_TRUE(m_camera.start());
    }
    awaitFreeCamera();
    expectGivenBack(before);

    const bool goesOn = job.objectionsToNext && run.code != 0;
    if (!goesOn)
        job.prepare();
    const Result next = job.run();
    const std::vector<std::string> nextObjections =
        goesOn ? job.objectionsToNext(next) : job.objections(next);
    EXPECT_TRUE(next.code == 0 && nextObjections.empty())
        << "the next run: " << ::testing::PrintToString(nextObjections) << next.out << next.err;
}

void Sweep::printSums() const
{
    std::ostringstream text;
    text << m_runs << " runs\n";
    for (const auto& [trouble, codes] : m_endings) {
        text << "  " << trouble << ':';
        for (const auto& [code, count] : codes)
            text << "  exit " << code << ' ' << count << " times";
        text << '\n';
    }
    std::fputs(text.str().c_str(), stdout);
}

} // namespace tests
