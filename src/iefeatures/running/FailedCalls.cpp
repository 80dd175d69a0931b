#include "iefeatures/running/FailedCalls.h"

#include "iefeatures/running/CallKind.h"

namespace companion
{
namespace
{

template <typename Key>
void note(std::map<Key, KX_Status>& failures, const Key& key, const KX_CallEvent& event)
{
    if (event.status == KX_OK)
        failures.erase(key);
    else if (isWrite(event) || tellsLineFailure(event))
        failures[key] = event.status;
}

} // namespace

bool tellsLineFailure(const KX_CallEvent& event)
{
    return KX_IS_LINE_FAILURE(event.status) && event.status != KX_E_ABORTED &&
           event.status != KX_E_BUFFER_TOO_SMALL;
}

void FailedCalls::take(const KX_CallEvent& event)
{
    // A register that is read right behind its failed write is looked at to see whether the write took all
    // the same; only the next cycle's read tells that nothing is left to do.
    const bool looksBehindWrite =
        m_wasFailedWrite && event.operation == KX_OP_READ_MEMORY && event.address == m_lastAddress;
    if (isOnMemory(event) && !(looksBehindWrite && event.status == KX_OK))
        note(m_registers, event.address, event);
    else if (isOnValue(event) && event.nodeName)
        note(m_features, std::string(event.nodeName), event);
    else if (event.operation == KX_OP_GET_ACCESS_MODE && event.nodeName)
        note(m_questions, std::string(event.nodeName), event);
    m_wasFailedWrite = event.operation == KX_OP_WRITE_MEMORY && event.status != KX_OK;
    m_lastAddress = event.address;
}

std::vector<FailedCall> FailedCalls::failures() const
{
    std::vector<FailedCall> failures;
    for (const auto* named : {&m_features, &m_questions})
        for (const auto& [name, status] : *named)
            failures.push_back({QString::fromUtf8(name.c_str()), false, 0, status});
    for (const auto& [address, status] : m_registers)
        failures.push_back({{}, true, address, status});
    return failures;
}

} // namespace companion
