#include "KXCameraControl/api/ThreadError.h"

#include <windows.h>

namespace kx::api
{
namespace
{

void WINAPI destroy(void* text)
{
    delete static_cast<std::string*>(text);
}

// Not thread_local: of a library's own, the compiler's runtime frees the memory when a thread ends, and calls
// the destructors afterwards.
class Texts
{
public:
    ~Texts() { FlsFree(m_index); }

    std::string& ofThread()
    {
        if (auto* const text = static_cast<std::string*>(FlsGetValue(m_index)))
            return *text;
        auto* const made = new std::string;
        FlsSetValue(m_index, made);
        return *made;
    }

private:
    const DWORD m_index = FlsAlloc(destroy);
};

} // namespace

std::string& lastThreadError()
{
    static Texts texts;
    return texts.ofThread();
}

} // namespace kx::api
