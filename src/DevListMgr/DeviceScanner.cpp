#include "DeviceScanner.h"

#include <QDeadlineTimer>

namespace
{

constexpr int kIntervalMs = 2000;
constexpr int kInterfaceCheckMs = 250;

QVector<KX_DeviceEntry> search(unsigned int transports)
{
    QVector<KX_DeviceEntry> entries(64);
    uint32_t count = 0;
    KX_Status status = KX_CC_EnumDevices(transports, entries.data(), uint32_t(entries.size()), &count);
    if (status == KX_OK && count > uint32_t(entries.size())) {
        entries.resize(int(count));
        status = KX_CC_EnumDevices(transports, entries.data(), uint32_t(entries.size()), &count);
    }
    entries.resize(status == KX_OK ? qMin(int(count), entries.size()) : 0);
    return entries;
}

} // namespace

DeviceScanner::DeviceScanner(QObject* parent) : QThread(parent)
{
    qRegisterMetaType<QVector<KX_DeviceEntry>>();
}

DeviceScanner::~DeviceScanner()
{
    {
        QMutexLocker lock(&m_mutex);
        m_end = true;
    }
    m_wake.wakeAll();
    wait();
}

void DeviceScanner::setTransports(unsigned int transports)
{
    {
        QMutexLocker lock(&m_mutex);
        m_transports = transports;
        m_again = true;
    }
    m_wake.wakeAll();
}

void DeviceScanner::run()
{
    do {
        unsigned int transports = 0;
        {
            QMutexLocker lock(&m_mutex);
            transports = m_transports;
            m_again = false;
        }
        emit scanned(transports ? search(transports) : QVector<KX_DeviceEntry>());
    } while (pause());
}

// Until the interval is over, or the transports or the machine's network interfaces change.
bool DeviceScanner::pause()
{
    const uint32_t stamp = KX_CC_GetInterfaceStamp();
    const QDeadlineTimer interval(kIntervalMs);
    QMutexLocker lock(&m_mutex);
    while (!m_end && !m_again && !interval.hasExpired()) {
        m_wake.wait(&m_mutex, kInterfaceCheckMs);
        lock.unlock();
        const bool changed = KX_CC_GetInterfaceStamp() != stamp;
        lock.relock();
        if (changed)
            break;
    }
    return !m_end;
}
