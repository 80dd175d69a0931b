// Looks for cameras again and again on a thread of its own. What stands in the way of a search goes to the
// log once, as long as it does.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QStringList>
#include <QThread>

#include <condition_variable>
#include <mutex>
#include <vector>

using DeviceEntries = std::vector<KX_DeviceEntry>;
Q_DECLARE_METATYPE(DeviceEntries)

class DeviceScanner : public QThread
{
    Q_OBJECT

public:
    explicit DeviceScanner(QObject* parent = nullptr);
    ~DeviceScanner() override; // ends the thread: at most one search long

    // Transports to look for; 0: look for none. Takes effect at once.
    void setTransports(unsigned int transports);

signals:
    void scanned(DeviceEntries entries);

protected:
    void run() override;

private:
    void tellProblems();
    bool pause(); // false: the thread is to end

    std::mutex m_mutex;
    std::condition_variable m_wake;
    unsigned int m_transports = 0;
    bool m_again = false;
    bool m_end = false;
    QStringList m_problems; // of the last search; the thread's alone
};
