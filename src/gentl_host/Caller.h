// One session's way into the producer: tells the library which function it enters, and holds what comes back
// against the standard.
#pragma once

#include "gentl/Channel.h"
#include "gentl/HostProtocol.h"
#include "gentl_host/Producer.h"

#include <functional>
#include <string>
#include <vector>

namespace gentl_host
{

// What a request ends with when it is not done.
struct Failure
{
    Outcome outcome;
    Error code = Success; // where the producer refused
    std::string text;
};

class Caller
{
public:
    Caller(Producer& producer, Channel& channel) : gc(producer), m_channel(channel) {}

    Producer& gc;

    template <class... Parameters, class... Arguments>
    Error operator()(const Function<Error(Parameters...)>& function, Arguments... arguments)
    {
        note(function.name);
        m_last = function.name;
        return function.address(arguments...);
    }
    // Throws a Failure unless the error is Success.
    void must(Error error);
    void note(const std::string& text);
    // The function that was entered last.
    const std::string& last() const { return m_last; }

    // Asks for a text; `ask` is called with a type, a buffer and its size. Empty where the producer has none.
    using Ask = std::function<Error(int32_t* type, void* data, size_t* size)>;
    std::string text(const Ask& ask);
    // The same for one that has to be there.
    std::string neededText(const Ask& ask);
    int32_t number(const Ask& ask, int32_t otherwise);
    // Throws a Failure when `size` is beyond `room`.
    void checkLength(size_t size, size_t room) const;

private:
    Error askForText(const Ask& ask, std::string& value);

    Channel& m_channel;
    std::string m_last; // function
};

} // namespace gentl_host
