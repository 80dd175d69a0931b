// A camera's description, as it lies in the camera and as a text.
#pragma once

#include "digest/Digest.h"

#include <memory>
#include <string>

namespace kx
{

// Never changes: handles of the same description share one.
class Description
{
public:
    // `memory`: what the camera holds where its URL points, an archive or the text itself.
    Description(std::string memory, std::string text);

    const std::string& memory() const { return m_isTextItself ? m_text : m_memory; }
    // Without terminator.
    const std::string& text() const { return m_text; }
    const digest::Sha256& textDigest() const { return m_textDigest; }

private:
    std::string m_text;
    bool m_isTextItself;
    std::string m_memory;
    digest::Sha256 m_textDigest;
};

using SharedDescription = std::shared_ptr<const Description>;

// Unpacks an archive and cuts the text at its first zero byte. `isCalledZip`: by the name that the camera
// gives it, which counts where the bytes say nothing. Null, with a reason, where no text comes of it.
SharedDescription descriptionIn(std::string memory, bool isCalledZip, std::string& problem);

} // namespace kx
