// One running ie_gentl_host: a process with one producer in it, which can be ended at any time.
//
// The program is found by KX_GENTL_HOST (a path), else beside the library, on Linux also in bin beside its
// folder or in libexec/import-export-features of what the library is installed to. What the producer prints
// goes to the file that KX_GENTL_LOG names, else nowhere.
#pragma once

#include "gentl/Channel.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace kx
{

// Thread-safe.
class HostProcess
{
public:
    // Null, with a sentence: the program cannot be started.
    static std::unique_ptr<HostProcess> start(const std::string& producer, std::string& problem);
    // Lets it leave in order, for a moment.
    ~HostProcess();
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    // A further connection; `loss` may be closed.
    bool connect(const gentl::Channel& requests, const gentl::Channel& loss);

    // Ends it at once, because a call in it does not come back. Gives why it ended, as a clause ("crashed in
    // IFOpenDevice (signal 11)"); the first reason stays.
    std::string endHung(const std::string& function, int64_t milliseconds);
    // Its connection is gone: finds out what it ended by.
    std::string endGone(const std::string& function);
    bool isOver() const;
    void configureOnce(const std::function<void()>& configure) { std::call_once(m_configured, configure); }

private:
    HostProcess(intptr_t process, gentl::Channel control) : m_process(process), m_control(std::move(control))
    {}
    // Ends it, and waits for that; gives what it ended by, as the system says it. With the lock.
    uint32_t reap();

    mutable std::mutex m_mutex;
    intptr_t m_process; // a process's number, on Windows a handle; 0: over
    gentl::Channel m_control;
    std::string m_reason; // for its end
    std::once_flag m_configured;
};

} // namespace kx
