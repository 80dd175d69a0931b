#include "DeviceScanner.h"

#include "camera_line/Enumeration.h"
#include "camera_line/SearchProblems.h"

#include <QDeadlineTimer>
#include <QDebug>

#include <chrono>

namespace
{

constexpr int kIntervalMs = 2000;
constexpr std::chrono::milliseconds kInterfaceCheck{250};

// A search that fails is one without answers: the next one comes soon.
DeviceEntries search(unsigned int transports)
{
    DeviceEntries entries;
    if (transports)
        camera_line::enumerateCameras(transports, entries);
    return entries;
}

} // namespace

DeviceScanner::DeviceScanner(QObject* parent) : QThread(parent)
{
    qRegisterMetaType<DeviceEntries>();
}

DeviceScanner::~DeviceScanner()
{
    {
        const std::lock_guard lock(m_mutex);
        m_end = true;
    }
    m_wake.notify_all();
    wait();
}

void DeviceScanner::setTransports(unsigned int transports)
{
    {
        const std::lock_guard lock(m_mutex);
        m_transports = transports;
        m_again = true;
    }
    m_wake.notify_all();
}

void DeviceScanner::run()
{
    do {
        unsigned int transports = 0;
        {
            const std::lock_guard lock(m_mutex);
            transports = m_transports;
            m_again = false;
        }
        emit scanned(search(transports));
        if (transports)
            tellProblems();
    } while (pause());
}

void DeviceScanner::tellProblems()
{
    const QStringList problems = camera_line::searchProblems();
    for (const QString& problem : problems)
        if (!m_problems.contains(problem))
            qWarning().noquote() << problem;
    m_problems = problems;
}

// Until the interval is over, or the transports or the machine's network interfaces change.
bool DeviceScanner::pause()
{
    const uint32_t stamp = KX_CC_GetInterfaceStamp();
    const QDeadlineTimer interval(kIntervalMs);
    std::unique_lock lock(m_mutex);
    while (!m_end && !m_again && !interval.hasExpired()) {
        m_wake.wait_for(lock, kInterfaceCheck);
        lock.unlock();
        const bool changed = KX_CC_GetInterfaceStamp() != stamp;
        lock.lock();
        if (changed)
            break;
    }
    return !m_end;
}
