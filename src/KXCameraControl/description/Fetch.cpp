// The forms of URLs that lead into a camera's own memory, and the way from there to a text.
#include "KXCameraControl/description/Fetch.h"

#include "KXCameraControl/description/DescriptionCache.h"
#include "KXCameraControl/description/Evidence.h"
#include "KXCameraControl/description/Unzip.h"

#include "digest/Digest.h"

#include <algorithm>
#include <cstdlib>
#include <random>

namespace kx
{

namespace
{

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string toLower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}

bool endsWith(const std::string& text, const std::string& ending)
{
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

std::string trimmed(const std::string& text)
{
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

bool parseHex(const std::string& text, uint64_t& number)
{
    std::string digits = trimmed(text);
    if (digits.size() > 2 && digits[0] == '0' && lower(digits[1]) == 'x')
        digits.erase(0, 2);
    if (digits.empty() || digits.size() > 16)
        return false;
    if (digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return false;
    number = std::strtoull(digits.c_str(), nullptr, 16);
    return true;
}

// Of the text behind the question mark, which is in lower case.
std::string sha1In(const std::string& url)
{
    constexpr char key[] = "?sha1=";
    const auto at = url.find(key);
    return at == std::string::npos ? std::string() : url.substr(at + sizeof key - 1);
}

unsigned anyNumber()
{
    return std::random_device()();
}

// Whether the camera has at `local` what is remembered, as far as the evidence goes. A refused block is a
// difference; only a failed line is a failure.
KX_Status compareWithCamera(Port& port, const LocalUrl& local, const Description& remembered, bool& agrees)
{
    const std::string& memory = remembered.memory();
    const auto evidence = evidenceOf(memory, anyNumber);
    agrees = evidence && memory.size() == local.length;
    for (size_t i = 0; agrees && i < evidence->size(); ++i) {
        const size_t from = (*evidence)[i] * evidenceBlock;
        std::string block(std::min(evidenceBlock, memory.size() - from), '\0');
        const KX_Status status = port.readMemory(local.address + from, block.data(), block.size());
        if (status != KX_OK && status != KX_E_GC_ACCESS)
            return status;
        agrees = status == KX_OK && memory.compare(from, block.size(), block) == 0;
    }
    return KX_OK;
}

KX_Status readWhole(Port& port, const LocalUrl& local, SharedDescription& description, std::string& problem)
{
    std::string bytes(local.length, '\0');
    if (const KX_Status status = port.readMemory(local.address, bytes.data(), bytes.size())) {
        problem = port.lastError();
        return status;
    }
    if (!local.sha1.empty() && digest::sha1Text(bytes) != local.sha1) {
        problem = "its bytes do not have the SHA-1 digest that the camera gives of them";
        return KX_E_DESCRIPTION;
    }
    description = descriptionIn(std::move(bytes), local.isZip(), problem);
    return description ? KX_OK : KX_E_DESCRIPTION;
}

KX_Status fetchFrom(Port& port, const std::string& url, SharedDescription& description, std::string& problem)
{
    LocalUrl local;
    if (!parseLocalUrl(url, local, problem))
        return KX_E_DESCRIPTION;
    if (local.length == 0 || local.length > maximumFetchedBytes) {
        problem = "its length is " + std::to_string(local.length);
        return KX_E_DESCRIPTION;
    }
    const CameraNames names = port.names();
    if (names.model.empty()) // it does not say what it is: nothing tells it from others
        return readWhole(port, local, description, problem);
    const digest::Sha256 key = descriptionKey(names, url);
    SharedDescription found = rememberedDescription(key, local.isZip());
    bool isKnown = false;
    if (const KX_Status status = found ? compareWithCamera(port, local, *found, isKnown) : KX_OK) {
        problem = port.lastError();
        return status;
    }
    if (!isKnown) {
        if (const KX_Status status = readWhole(port, local, found, problem))
            return status;
    }
    const bool canProveItself = isKnown || evidenceOf(found->memory(), anyNumber);
    description = canProveItself ? rememberDescription(key, found, !isKnown) : found;
    return KX_OK;
}

} // namespace

bool LocalUrl::isZip() const
{
    return endsWith(toLower(fileName), ".zip");
}

bool parseLocalUrl(const std::string& url, LocalUrl& parsed, std::string& problem)
{
    std::string rest = trimmed(url.substr(0, url.find('\0')));
    if (toLower(rest).compare(0, 6, "local:") != 0) {
        problem =
            rest.empty() ? "the camera names none" : "\"" + rest + "\" is not in the camera's own memory";
        return false;
    }
    rest.erase(0, 6);
    parsed.sha1 = sha1In(toLower(rest));
    rest.resize(std::min(rest.find('?'), rest.size()));
    rest.erase(0, std::min(rest.find_first_not_of('/'), rest.size()));
    const auto first = rest.find(';');
    const auto second = first == std::string::npos ? first : rest.find(';', first + 1);
    if (second == std::string::npos ||
        !parseHex(rest.substr(first + 1, second - first - 1), parsed.address) ||
        !parseHex(rest.substr(second + 1), parsed.length)) {
        problem = "\"" + url + "\" names no address and length";
        return false;
    }
    parsed.fileName = rest.substr(0, first);
    return true;
}

KX_Status fetchDescription(Port& port, SharedDescription& description, std::string& problem)
{
    description.reset();
    std::vector<std::string> urls;
    KX_Status status = port.descriptionUrls(urls);
    if (status != KX_OK && status != KX_E_GC_ACCESS) {
        problem = port.lastError();
        return status;
    }
    problem = "The camera names no description.";
    std::string reasons;
    for (const std::string& url : urls) {
        std::string reason;
        status = fetchFrom(port, url, description, reason);
        if (status == KX_OK) {
            problem.clear();
            return KX_OK;
        }
        reasons += (reasons.empty() ? "" : "; ") + reason;
        problem = "The description cannot be fetched: " + reasons + ".";
        if (status != KX_E_DESCRIPTION && status != KX_E_GC_ACCESS)
            return status;
    }
    return KX_E_DESCRIPTION;
}

} // namespace kx
