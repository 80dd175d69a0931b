// Parsing each description once, and keeping what was used last.
#include "KXCameraControl/camera/ParsedDescriptions.h"

#include "KXCameraControl/description/Check.h"

#include <algorithm>
#include <list>
#include <map>
#include <mutex>

namespace kx
{

namespace
{

struct Slot
{
    std::once_flag parsed;
    ParsedDescription description;
    size_t size = 0; // of the text
};

ParsedDescription parse(const std::string& text)
{
    ParsedDescription description;
    std::string reason;
    if (isParsable(text, description.problem) && !description.nodes.load(text, reason))
        description.problem = "The description cannot be used: " + reason + ".";
    return description;
}

class Slots
{
public:
    std::shared_ptr<Slot> of(const digest::Sha256& digest, size_t size)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::shared_ptr<Slot> slot = m_byDigest[digest].lock();
        if (!slot) {
            forgetTheDead();
            slot = std::make_shared<Slot>();
            slot->size = size;
            m_byDigest[digest] = slot;
        }
        keep(slot);
        return slot;
    }

private:
    // A table takes about ten times its text.
    static constexpr size_t keptBytes = 4u << 20;
    static constexpr size_t keptSlots = 16;

    void keep(const std::shared_ptr<Slot>& slot)
    {
        m_kept.remove(slot);
        m_kept.push_front(slot);
        size_t bytes = 0;
        size_t count = 0;
        const auto isTooMany = [&](const std::shared_ptr<Slot>& kept) {
            bytes += kept->size;
            return ++count > keptSlots || (count > 1 && bytes > keptBytes);
        };
        m_kept.erase(std::find_if(m_kept.begin(), m_kept.end(), isTooMany), m_kept.end());
    }

    void forgetTheDead()
    {
        for (auto it = m_byDigest.begin(); it != m_byDigest.end();)
            it = it->second.expired() ? m_byDigest.erase(it) : std::next(it);
    }

    std::mutex m_mutex;
    std::map<digest::Sha256, std::weak_ptr<Slot>> m_byDigest;
    std::list<std::shared_ptr<Slot>> m_kept; // the last used first
};

// Never destroyed: threads of the program may still open cameras while the process ends.
Slots& slots()
{
    static auto* const instance = new Slots;
    return *instance;
}

} // namespace

std::shared_ptr<const ParsedDescription> parsedDescription(const Description& description)
{
    const std::string& text = description.text();
    const std::shared_ptr<Slot> slot = slots().of(description.textDigest(), text.size());
    std::call_once(slot->parsed, [&] { slot->description = parse(text); });
    return {slot, &slot->description};
}

} // namespace kx
