// The memory's half of what is remembered, and the way to the disk's.
#include "KXCameraControl/description/DescriptionCache.h"

#include "KXCameraControl/description/DescriptionFolder.h"

#include <algorithm>
#include <list>
#include <mutex>

namespace kx
{

namespace
{

class LastDescriptions
{
public:
    SharedDescription find(const digest::Sha256& key)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found =
            std::find_if(m_last.begin(), m_last.end(), [&](const Entry& entry) { return entry.key == key; });
        return found == m_last.end() ? nullptr : found->description;
    }

    SharedDescription keep(const digest::Sha256& key, SharedDescription description)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const Entry& entry : m_last) {
            if (entry.description->memory() == description->memory() &&
                entry.description->text() == description->text())
                description = entry.description;
        }
        m_last.remove_if([&](const Entry& entry) { return entry.key == key; });
        m_last.push_front({key, description});
        forgetTheOldest();
        return description;
    }

private:
    static constexpr size_t keptEntries = 16;
    static constexpr size_t keptBytes = 16u << 20;

    struct Entry
    {
        digest::Sha256 key;
        SharedDescription description;
    };

    void forgetTheOldest()
    {
        size_t bytes = 0;
        size_t count = 0;
        const auto isTooMuch = [&](const Entry& entry) {
            bytes += entry.description->memory().size() + entry.description->text().size();
            return ++count > keptEntries || bytes > keptBytes;
        };
        m_last.erase(std::find_if(m_last.begin(), m_last.end(), isTooMuch), m_last.end());
    }

    std::mutex m_mutex;
    std::list<Entry> m_last; // the last used first
};

// Never destroyed: threads of the program may still open cameras while the process ends.
LastDescriptions& lastDescriptions()
{
    static auto* const instance = new LastDescriptions;
    return *instance;
}

} // namespace

// Each text with its length in front: what stands in one cannot look like the next.
digest::Sha256 descriptionKey(const CameraNames& names, const std::string& url)
{
    std::string key;
    for (const std::string* text : {&names.manufacturer, &names.model, &names.deviceVersion, &url})
        key += std::to_string(text->size()) + ':' + *text;
    return digest::sha256(key);
}

SharedDescription rememberedDescription(const digest::Sha256& key, bool isCalledZip)
{
    if (SharedDescription last = lastDescriptions().find(key))
        return last;
    const auto folder = DescriptionFolder::ofEnvironment();
    auto memory = folder ? folder->find(key) : std::nullopt;
    std::string problem;
    return memory ? descriptionIn(std::move(*memory), isCalledZip, problem) : nullptr;
}

SharedDescription rememberDescription(const digest::Sha256& key, SharedDescription description, bool isNew)
{
    const auto folder = isNew ? DescriptionFolder::ofEnvironment() : std::nullopt;
    if (folder)
        folder->store(key, description->memory());
    return lastDescriptions().keep(key, std::move(description));
}

} // namespace kx
