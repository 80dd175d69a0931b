// The scripted camera library's own: its handles, and what every call on one goes through.
#pragma once

#include "ScriptedCamera.h"

namespace tests
{

struct ScriptedHandle
{
    int ordinal = 0;
    ScriptedDevice* device = nullptr;
    KX_DeviceInfo info{};
    bool isOpen = false;
    bool isDestroyed = false; // kept all the same, so that an address is never used twice
    KX_CallObserver observer = nullptr;
    void* observerUser = nullptr;
    KX_ConnectionLostHandler lostHandler = nullptr;
    void* lostUser = nullptr;
};

bool isOperation(const QByteArray& operation);
void addViolation(const QString& text);
void tellConnectionLost(const ScriptedDevice& device, KX_Status status);

// KX_E_NO_DEVICE where no device has the record's serial number, else what the device's rules say.
KX_Status createHandle(const KX_DeviceInfo& info, ScriptedHandle** handle);
// Null for a null handle, and for one that is destroyed or was never made (a violation).
ScriptedHandle* findHandle(KX_HANDLE handle);
void setObserver(ScriptedHandle* handle, KX_CallObserver observer, void* user); // null: of handles to come
QByteArray serialOf(const KX_DeviceInfo& info);
// Whether `length` bytes at `buffer` lie inside it, as far as that can be known.
bool isInsideBuffer(const void* buffer, qint64 length);
void runHook(const QByteArray& serial, const TraceEntry& call);
std::vector<ScriptedDevice*> allDevices();
DeviceSearch deviceSearch();

// One call: entered into the record when it is made, finished by run().
class ScriptedCall
{
public:
    ScriptedCall(const char* operation, KX_HANDLE handle, const char* name, QVariantList arguments,
                 uint32_t observed = 0);
    ScriptedCall& at(qint64 address, qint64 length);

    // What every call on a handle goes through: a living handle, the observer, the scripts, an open
    // connection, then `action`, which answers the status.
    template <typename Action>
    KX_Status run(Action action)
    {
        KX_Status status = begin();
        if (status == KX_OK)
            status = action(*m_handle, *m_handle->device);
        return finish(status);
    }
    // The same for calls that need no open connection.
    ScriptedCall& evenClosed();

    // Statuses of getters and setters; `member` chooses the node's kind.
    template <typename Value>
    KX_Status get(std::optional<Value> ScriptedNode::*member, Value* value);
    template <typename Value, typename Change>
    KX_Status set(std::optional<Value> ScriptedNode::*member, Change change);
    KX_Status readMemory(void* buffer);
    KX_Status writeMemory(const void* buffer);
    KX_Status describe(void* buffer, uint32_t size, uint32_t* length);
    KX_Status accessMode(KX_XML_AccessMode* mode);

private:
    KX_Status begin();
    KX_Status finish(KX_Status status);
    bool isRefusedByObserver();
    void tellObserver(KX_Status status);
    KX_CallEvent event() const;
    KX_Status checkName() const;

    TraceEntry m_entry;
    KX_HANDLE m_rawHandle;
    ScriptedHandle* m_handle;
    const char* m_name;
    uint32_t m_observed;
    bool m_needsOpen = true;
    std::optional<qint64> m_address = std::nullopt;
    qint64 m_length = 0;
};

template <typename Value>
KX_Status ScriptedCall::get(std::optional<Value> ScriptedNode::*member, Value* value)
{
    return run([&](ScriptedHandle&, ScriptedDevice& device) -> KX_Status {
        if (checkName() != KX_OK || !value)
            return KX_E_PARAMETER;
        const std::lock_guard<std::recursive_mutex> lock(device.m_mutex);
        const auto found = device.m_nodes.find(m_name);
        if (found == device.m_nodes.end())
            return KX_E_GC_PROPERTY;
        if (!(found->second.*member))
            return KX_E_GC_LOGICAL;
        if (found->second.accessMode != KX_AM_READ_ONLY && found->second.accessMode != KX_AM_READ_WRITE)
            return KX_E_GC_ACCESS;
        *value = *(found->second.*member);
        return KX_OK;
    });
}

template <typename Value, typename Change>
KX_Status ScriptedCall::set(std::optional<Value> ScriptedNode::*member, Change change)
{
    return run([&](ScriptedHandle&, ScriptedDevice& device) -> KX_Status {
        if (checkName() != KX_OK)
            return KX_E_PARAMETER;
        const std::lock_guard<std::recursive_mutex> lock(device.m_mutex);
        const auto found = device.m_nodes.find(m_name);
        if (found == device.m_nodes.end())
            return KX_E_GC_PROPERTY;
        if (!(found->second.*member))
            return KX_E_GC_LOGICAL;
        if (found->second.accessMode != KX_AM_WRITE_ONLY && found->second.accessMode != KX_AM_READ_WRITE)
            return KX_E_GC_ACCESS;
        const KX_Status status = change(*(found->second.*member));
        const auto effects = device.m_setEffects.find(m_name);
        if (status == KX_OK && effects != device.m_setEffects.end())
            device.runEffects(effects->second);
        return status;
    });
}

} // namespace tests
