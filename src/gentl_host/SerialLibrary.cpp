#include "gentl_host/SerialLibrary.h"

#include <algorithm>

namespace gentl_host
{

void SerialLibrary::load(Caller& call)
{
    const std::lock_guard lock(m_mutex);
    if (m_isLoaded)
        return;
    call.note("loading");
    LibraryFile file;
    std::string problem = file.open(m_path);
    if (problem.empty()) {
#define CLSERIAL_FIND(name, parameters, isNeeded) file.find(name);
        CLSERIAL_FUNCTIONS(CLSERIAL_FIND)
#undef CLSERIAL_FIND
        if (!file.missing().empty())
            problem = "it is no serial library of Camera Link 1.1: it lacks " + file.missing();
    }
    if (!problem.empty())
        throw Failure{Outcome::Unusable, clserial::Success, problem};
    m_isLoaded = true;
}

// Empty: it has no words for it.
std::string SerialLibrary::textOf(Caller& call, Error error)
{
    std::vector<char> words(kMaxText + 1);
    uint32_t size = kMaxText;
    if (!clGetErrorText || call(clGetErrorText, error, words.data(), &size) != clserial::Success)
        return {};
    return words.data();
}

void SerialLibrary::must(Caller& call, Error error)
{
    if (error == clserial::Success)
        return;
    const std::string function = call.last();
    const std::string words = textOf(call, error);
    throw Failure{Outcome::Refused, error,
                  function + ": " + words + (words.empty() ? "" : " ") + "(" + std::to_string(error) + ")"};
}

std::string SerialLibrary::identifier(Caller& call, uint32_t index)
{
    std::vector<char> text(kMaxText + 1);
    uint32_t size = kMaxText;
    must(call, call(clGetSerialPortIdentifier, index, text.data(), &size));
    call.checkLength(size, kMaxText);
    return text.data();
}

std::vector<std::string> SerialLibrary::ports(Caller& call)
{
    const std::lock_guard lock(m_mutex);
    uint32_t count = 0;
    must(call, call(clGetNumSerialPorts, &count));
    std::vector<std::string> names;
    for (uint32_t i = 0; i < std::min(count, kMostSerialPorts); ++i)
        names.push_back(identifier(call, i));
    return names;
}

SerialLibrary::Port SerialLibrary::open(Caller& call, uint32_t index)
{
    const std::lock_guard lock(m_mutex);
    Port port = nullptr;
    must(call, call(clSerialInit, index, &port));
    return port;
}

} // namespace gentl_host
