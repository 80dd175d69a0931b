#include "camera_emulator/producer/OwnFile.h"

#include <windows.h>

namespace producer
{

std::string ownFile()
{
    HMODULE own = nullptr;
    char path[MAX_PATH] = {};
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&ownFile), &own);
    return GetModuleFileNameA(own, path, MAX_PATH) != 0 ? path : "";
}

} // namespace producer
