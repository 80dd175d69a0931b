#include "gentl_host/Caller.h"

#include <algorithm>

namespace gentl_host
{

void Caller::note(const std::string& text)
{
    m_channel.send(Writer().u32(static_cast<uint32_t>(Reply::Note)).text(text).bytes());
}

// The producer's own words come with it.
void Caller::must(Error error)
{
    if (error == Success)
        return;
    const std::string function = m_last;
    std::vector<char> words(kMaxText + 1);
    size_t size = kMaxText;
    Error code = Success;
    const bool hasWords = (*this)(gc.GCGetLastError, &code, words.data(), &size) == Success;
    if (hasWords)
        checkLength(size, kMaxText);
    const std::string text = hasWords && code == error ? std::string(words.data()) : std::string();
    throw Failure{Outcome::Refused, error,
                  function + ": " + (text.empty() ? "" : text + " ") + "(" + std::to_string(error) + ")"};
}

void Caller::checkLength(size_t size, size_t room) const
{
    if (size > room)
        throw Failure{Outcome::Bad, Success,
                      m_last + " gives a length of " + std::to_string(size) + " for a buffer of " +
                          std::to_string(room)};
}

Error Caller::askForText(const Ask& ask, std::string& value)
{
    std::vector<char> buffer(kMaxText + 1);
    size_t size = kMaxText;
    int32_t type = TypeString;
    const Error error = ask(&type, buffer.data(), &size);
    if (error != Success)
        return error;
    checkLength(size, kMaxText);
    if (type != TypeString && type != TypeUnknown)
        throw Failure{Outcome::Bad, Success,
                      m_last + " gives data of type " + std::to_string(type) + " for a text"};
    value.assign(buffer.data(), std::find(buffer.data(), buffer.data() + size, '\0'));
    return Success;
}

std::string Caller::text(const Ask& ask)
{
    std::string value;
    askForText(ask, value);
    return value;
}

std::string Caller::neededText(const Ask& ask)
{
    std::string value;
    must(askForText(ask, value));
    return value;
}

int32_t Caller::number(const Ask& ask, int32_t otherwise)
{
    int64_t room = 0; // more than asked for: some producers write 64 bits
    int32_t value = 0;
    size_t size = sizeof value;
    int32_t type = TypeInt32;
    if (ask(&type, &room, &size) != Success)
        return otherwise;
    checkLength(size, sizeof room);
    value = static_cast<int32_t>(room & 0xFFFFFFFF);
    return value;
}

} // namespace gentl_host
