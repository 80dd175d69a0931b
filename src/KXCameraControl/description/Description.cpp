// The way from a camera's memory to a text.
#include "KXCameraControl/description/Description.h"

#include "KXCameraControl/description/Unzip.h"

#include <algorithm>

namespace kx
{

Description::Description(std::string memory, std::string text)
    : m_text(std::move(text)), m_isTextItself(memory == m_text),
      m_memory(m_isTextItself ? std::string() : std::move(memory)), m_textDigest(digest::sha256(m_text))
{}

SharedDescription descriptionIn(std::string memory, bool isCalledZip, std::string& problem)
{
    std::string text;
    // Some cameras name an archive .xml or text .zip: the bytes decide, the name only where they say nothing.
    const bool isArchive = memory.compare(0, 4, "PK\x03\x04") == 0 || (isCalledZip && memory[0] != '<');
    if (!isArchive)
        text = memory;
    else if (!unzip(memory, text, problem))
        return nullptr;
    text.resize(std::min(text.find('\0'), text.size()));
    if (!text.empty())
        return std::make_shared<const Description>(std::move(memory), std::move(text));
    problem = "it is empty";
    return nullptr;
}

} // namespace kx
