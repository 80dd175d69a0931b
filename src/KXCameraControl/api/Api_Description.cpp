// What the description alone tells: nothing here sends.
#include "KXCameraControl/api/Api_Guard.h"

using namespace kx;
using namespace kx::api;

namespace
{

std::string lines(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : "\n") + name;
    return text;
}

bool isTextBuffer(const char* text, uint32_t capacity, const uint32_t* length)
{
    return length && (text || capacity == 0);
}

template <class Body>
KX_Status onRange(KX_HANDLE handle, KX_Operation kind, int64_t address, int64_t length,
                  bool parametersAreGood, Body body)
{
    const bool isGood = parametersAreGood && length >= 1 && length <= maximumMemoryLength;
    return onNodes(handle, isGood, {kind, nullptr, address, length}, [&](NodeMap& nodes) -> KX_Status {
        return body(nodes, static_cast<uint64_t>(address), static_cast<uint64_t>(length));
    });
}

} // namespace

extern "C" {

KX_Status KX_CC_IsEverWritable(KX_HANDLE handle, const char* name, bool* writable)
{
    return onNode(handle, KX_OP_IS_EVER_WRITABLE, name, nullptr, writable != nullptr,
                  [&](NodeMap& nodes) { return nodes.isEverWritable(name, *writable); });
}

KX_Status KX_CC_GetRelatedNames(KX_HANDLE handle, const char* name, uint32_t relation, char* text,
                                uint32_t capacity, uint32_t* length)
{
    const bool isGood = isTextBuffer(text, capacity, length) && relation >= KX_RELATED_SELECTORS &&
                        relation <= KX_RELATED_LOCKS;
    return onNode(handle, KX_OP_GET_RELATED_NAMES, name, nullptr, isGood, [&](NodeMap& nodes) -> KX_Status {
        std::vector<std::string> names;
        const KX_Status status = nodes.relatedNames(name, relation, names);
        return status == KX_OK ? copyText(lines(names), text, capacity, length) : status;
    });
}

KX_Status KX_CC_GetRegisterCoverage(KX_HANDLE handle, int64_t address, int64_t length,
                                    KX_RegisterCoverage* coverage)
{
    return onRange(handle, KX_OP_GET_REGISTER_COVERAGE, address, length, coverage != nullptr,
                   [&](NodeMap& nodes, uint64_t from, uint64_t size) {
                       return nodes.registerCoverage(from, size, *coverage);
                   });
}

KX_Status KX_CC_GetRegisterNames(KX_HANDLE handle, int64_t address, int64_t length, char* text,
                                 uint32_t capacity, uint32_t* textLength)
{
    return onRange(handle, KX_OP_GET_REGISTER_NAMES, address, length,
                   isTextBuffer(text, capacity, textLength),
                   [&](NodeMap& nodes, uint64_t from, uint64_t size) -> KX_Status {
                       std::vector<std::string> names;
                       const KX_Status status = nodes.registerNames(from, size, names);
                       return status == KX_OK ? copyText(lines(names), text, capacity, textLength) : status;
                   });
}

} // extern "C"
