#include "iefeatures/running/Progress.h"

#include "iefeatures/console/Text.h"

#include "jobs/worker/QOperateThread.h"

#include <algorithm>

namespace companion
{
namespace
{

const char* const kFailed = "failed";

bool isImport(unsigned type)
{
    return type == JOB_FEATURE_BAG_IMPORT || type == JOB_FEATURE_XML_IMPORT;
}

} // namespace

Progress::Progress(Console& console, const std::vector<ListedCamera>& cameras, const CallWatch& watch)
    : m_console(console), m_watch(watch), m_cameras(cameras), m_haveFailed(cameras.size()),
      m_board(console, titlesOf(cameras))
{}

void Progress::begin(const ListedCamera& camera, unsigned type)
{
    const QString verb = isImport(type) ? "importing" : "exporting";
    m_board.begin(indexOf(camera), verb);
    tell(camera, verb);
}

void Progress::info(const ListedCamera& camera, const QString& message, bool isFailure)
{
    if (isFailure)
        m_haveFailed[indexOf(camera)] = true;
    m_board.breakSilence();
    m_console.err(camera.title() + ": " + printable(message) + '\n');
}

void Progress::end(const ListedCamera& camera, unsigned type, const QString&)
{
    const QString state = stateOf(camera, type);
    m_board.end(indexOf(camera), state, state == kFailed);
    tell(camera, state);
    tick();
}

// The signals do not tell all of it.
QString Progress::stateOf(const ListedCamera& camera, unsigned type) const
{
    const int id = camera.device.nDeviceID;
    if (m_haveFailed[indexOf(camera)] || m_watch.tally(id).hasOpenFailed)
        return kFailed;
    return isImport(type) && !m_watch.findings(id).failures.empty() ? "incomplete" : "done";
}

// An import goes over its features once and then over those that have not settled: how long that takes,
// nobody knows.
void Progress::tick()
{
    for (size_t i = 0; i < m_cameras.size(); ++i) {
        const CallWatch::Tally tally = m_watch.tally(m_cameras[i].device.nDeviceID);
        const QString reads = QString("%1 reads, %2 requests").arg(tally.reads).arg(tally.requests);
        m_board.advance(i, {tally.features, tally.expected, reads});
    }
    m_board.tick();
}

size_t Progress::indexOf(const ListedCamera& camera) const
{
    const auto found = std::find_if(m_cameras.begin(), m_cameras.end(), [&](const ListedCamera& known) {
        return known.device.nDeviceID == camera.device.nDeviceID;
    });
    return size_t(found - m_cameras.begin());
}

void Progress::tell(const ListedCamera& camera, const QString& text)
{
    if (m_console.redraws())
        return;
    m_board.breakSilence();
    m_console.note(camera.title() + ": " + text + '\n');
}

} // namespace companion
