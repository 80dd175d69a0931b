// A shared library of somebody else's, and the functions in it. It is never unloaded: threads of its own may
// still run.
#pragma once

#include <cstdint>
#include <string>

namespace gentl_host
{

template <class Signature>
struct Function;

// Error numbers are the same type in all the standards that are spoken here.
template <class... Parameters>
struct Function<int32_t(Parameters...)>
{
    const char* name;
    bool isNeeded;
    int32_t (*address)(Parameters...) = nullptr;

    explicit operator bool() const { return address != nullptr; }
};

class LibraryFile
{
public:
    // What stands in the way, or an empty text. `path`: UTF-8 on Windows.
    std::string open(const std::string& path);

    template <class Signature>
    void find(Function<Signature>& function)
    {
        function.address = reinterpret_cast<decltype(function.address)>(address(function.name));
        if (!function.address && function.isNeeded)
            m_missing += (m_missing.empty() ? "" : ", ") + std::string(function.name);
    }
    // The needed ones that were not found.
    const std::string& missing() const { return m_missing; }

private:
    void* address(const char* name) const;

    void* m_library = nullptr;
    std::string m_missing;
};

} // namespace gentl_host
