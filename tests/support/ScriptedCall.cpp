#include "ScriptedHandles.h"

#include <algorithm>

namespace tests
{

namespace
{

constexpr qint64 kLargestTransfer = 0x1000000;

} // namespace

ScriptedCall::ScriptedCall(const char* operation, KX_HANDLE handle, const char* name, QVariantList arguments,
                           uint32_t observed)
    : m_rawHandle(handle), m_handle(findHandle(handle)), m_name(name), m_observed(observed)
{
    m_entry.operation = operation;
    m_entry.handle = m_handle ? m_handle->ordinal : handle ? -1 : 0;
    m_entry.name = name;
    m_entry.arguments = std::move(arguments);
    m_entry.thread = std::this_thread::get_id();
    m_entry.sequence =
        Recorder::instance().beginCall(m_entry.operation, m_entry.handle, m_entry.name, m_entry.arguments);
}

ScriptedCall& ScriptedCall::at(qint64 address, qint64 length)
{
    m_address = address;
    m_length = length;
    return *this;
}

ScriptedCall& ScriptedCall::evenClosed()
{
    m_needsOpen = false;
    return *this;
}

KX_Status ScriptedCall::begin()
{
    runHook(m_handle ? m_handle->device->serial() : QByteArray(), m_entry);
    if (!m_handle)
        return KX_E_HANDLE;
    if (isRefusedByObserver())
        return KX_E_ABORTED;
    const KX_Status ruled = m_handle->device->ruledStatus(m_entry.operation, m_entry.name, m_address);
    if (ruled != KX_OK)
        return ruled;
    return m_needsOpen && !m_handle->isOpen ? KX_E_HANDLE : KX_OK;
}

KX_Status ScriptedCall::finish(KX_Status status)
{
    if (m_handle)
        tellObserver(status);
    Recorder::instance().finishCall(m_entry.sequence, status);
    return status;
}

KX_CallEvent ScriptedCall::event() const
{
    KX_CallEvent event{};
    event.handle = m_rawHandle;
    event.device = &m_handle->info;
    event.operation = m_observed;
    event.nodeName = m_name;
    event.address = m_address.value_or(0);
    event.length = m_length;
    return event;
}

bool ScriptedCall::isRefusedByObserver()
{
    if (!m_handle->observer || m_observed == 0)
        return false;
    const KX_CallEvent starting = event();
    return m_handle->observer(m_handle->observerUser, &starting) != 0 && m_observed != KX_OP_CLOSE;
}

void ScriptedCall::tellObserver(KX_Status status)
{
    if (!m_handle->observer || m_observed == 0)
        return;
    KX_CallEvent over = event();
    over.finished = 1;
    over.status = status;
    m_handle->observer(m_handle->observerUser, &over);
}

KX_Status ScriptedCall::checkName() const
{
    if (!m_name)
        addViolation(m_entry.operation + " without a name");
    return m_name && *m_name ? KX_OK : KX_E_PARAMETER;
}

KX_Status ScriptedCall::readMemory(void* buffer)
{
    return run([&](ScriptedHandle&, ScriptedDevice& device) -> KX_Status {
        if (!buffer || m_length < 1 || m_length > kLargestTransfer)
            return KX_E_PARAMETER;
        if (!isInsideBuffer(buffer, m_length)) {
            addViolation(QString("a read of %1 bytes goes beyond its buffer").arg(m_length));
            return KX_E_PARAMETER;
        }
        return device.read(buffer, *m_address, m_length);
    });
}

KX_Status ScriptedCall::writeMemory(const void* buffer)
{
    return run([&](ScriptedHandle&, ScriptedDevice& device) -> KX_Status {
        if (!buffer || m_length < 1 || m_length > kLargestTransfer)
            return KX_E_PARAMETER;
        if (!isInsideBuffer(buffer, m_length)) {
            addViolation(QString("a write of %1 bytes goes beyond its buffer").arg(m_length));
            return KX_E_PARAMETER;
        }
        return device.write(buffer, *m_address, m_length);
    });
}

KX_Status ScriptedCall::describe(void* buffer, uint32_t size, uint32_t* length)
{
    return run([&](ScriptedHandle&, ScriptedDevice& device) -> KX_Status {
        if (!buffer || !length)
            return KX_E_PARAMETER;
        return device.describe(buffer, size, length);
    });
}

KX_Status ScriptedCall::accessMode(KX_XML_AccessMode* mode)
{
    return run([&](ScriptedHandle&, ScriptedDevice& device) -> KX_Status {
        if (checkName() != KX_OK || !mode)
            return KX_E_PARAMETER;
        const std::lock_guard<std::recursive_mutex> lock(device.m_mutex);
        const auto found = device.m_nodes.find(m_name);
        if (found == device.m_nodes.end())
            return KX_E_GC_PROPERTY;
        *mode = found->second.accessMode;
        return KX_OK;
    });
}

} // namespace tests
