// A grabber's serial library (Camera Link), which all sessions share.
#pragma once

#include "gentl/ClSerial.h"
#include "gentl_host/Caller.h"

#include <mutex>
#include <string>
#include <vector>

namespace gentl_host
{

// From the threads of all sessions. Only one of them loads, counts or opens at a time, as with producers.
class SerialLibrary
{
public:
    explicit SerialLibrary(std::string path) : m_path(std::move(path)) {}

// NOLINTBEGIN(bugprone-macro-parentheses): a list of parameters brings its own
#define CLSERIAL_MEMBER(name, parameters, isNeeded)                                                          \
    Function<clserial::Error parameters> name{#name, isNeeded};
    // NOLINTEND(bugprone-macro-parentheses)
    using Port = clserial::Port;
    using Error = clserial::Error;
    CLSERIAL_FUNCTIONS(CLSERIAL_MEMBER)
#undef CLSERIAL_MEMBER

    // All of them throw Failure.
    void load(Caller& call);
    // Its word for each port, in the order of their numbers.
    std::vector<std::string> ports(Caller& call);
    Port open(Caller& call, uint32_t index);
    // Throws unless the error is Success, with the library's words for it.
    void must(Caller& call, Error error);

private:
    std::string textOf(Caller& call, Error error);
    std::string identifier(Caller& call, uint32_t index);

    const std::string m_path;
    std::mutex m_mutex;
    bool m_isLoaded = false;
};

} // namespace gentl_host
