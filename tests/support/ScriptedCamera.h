// A camera library that answers from tables and scripts and enters every call into the Recorder. Link the
// target scripted_camera in place of KXCameraControl. A device's tables are found by the serial number in the
// record that KX_CC_CreateHandle gets; an unknown serial number gives KX_E_NO_DEVICE there.
#pragma once

#include "Recorder.h"

#include <KXCameraControl/KXCameraControl.h>

#include <QByteArray>
#include <QByteArrayList>
#include <QStringList>

#include <condition_variable>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace tests
{

// Lets an operation fail. Operations are named as the functions, without their prefix ("OpenDevice",
// "GetIntValueEx", "ReadMemory", "GetGenICamXML"); any other word is a violation. Every condition that is set
// must hold; counting is by matching calls of this rule.
struct CallRule
{
    QByteArray operation;
    KX_Status status = KX_E_NO_ANSWER;
    std::optional<QByteArray> name = std::nullopt; // node name or file path, raw bytes
    std::optional<qint64> address = std::nullopt;
    int firstCall = 1; // counted from 1
    int lastCall = std::numeric_limits<int>::max();
};

// One answer of KX_XML_GetGenICamXML. `bytes` go into the buffer as far as it reaches, a zero behind them
// where there is room; no length: the caller's variable stays as it is.
struct DescriptionAnswer
{
    QByteArray bytes;
    std::optional<quint32> length = std::nullopt;
    KX_Status status = KX_OK;
};

struct ScriptedNode
{
    std::optional<bool> boolean;
    std::optional<KX_IntegerValue> integer;
    std::optional<KX_EnumValue> enumeration;
    std::optional<KX_FloatValue> real;
    std::optional<KX_StringValue> text;
    KX_XML_AccessMode accessMode = KX_AM_READ_WRITE;
    bool isEverWritable = true;
    std::map<uint32_t, QByteArray> related; // by KX_Relation, separated by line feeds
    std::map<uint32_t, QByteArray> entries; // names of an enumeration's values
};

// One camera. May be used from any thread, also while calls run; side effects may call it as well.
class ScriptedDevice
{
public:
    explicit ScriptedDevice(QByteArray serial);

    // Node table. An access mode that does not allow it lets getters and setters fail with KX_E_GC_ACCESS;
    // the other statuses are those that the library's header names.
    void setBool(const QByteArray& name, bool value);
    void setInteger(const QByteArray& name, qint64 current,
                    qint64 minimum = std::numeric_limits<qint64>::min(),
                    qint64 maximum = std::numeric_limits<qint64>::max(), qint64 increment = 1);
    void setEnumeration(const QByteArray& name, quint32 current, const std::vector<quint32>& supported);
    // An entry's name; without one KX_CC_GetEnumEntryName gives KX_E_GC_ARGUMENT.
    void setEntryName(const QByteArray& name, quint32 value, const QByteArray& entry);
    void setFloat(const QByteArray& name, float current);
    void setString(const QByteArray& name, const QByteArray& current, qint64 maximumLength = 255);
    // A node without a value of its own, or a change to one that has been set.
    void setAccessMode(const QByteArray& name, KX_XML_AccessMode mode);
    void removeNode(const QByteArray& name);
    // What the description says of a node; likewise.
    void setEverWritable(const QByteArray& name, bool writable);
    void setRelatedNames(const QByteArray& name, KX_Relation relation, const QByteArray& names);
    // A register of the description. While there is none, an address may be of any register (one that is
    // written and whose place only the camera can tell).
    void addDescribedRegister(const QByteArray& name, qint64 address, qint64 length, bool isEverWritable);
    void addUnplacedRegister(); // one more that is written and whose place only the camera can tell
    ScriptedNode node(const QByteArray& name) const; // an empty one for an unknown name
    bool hasNode(const QByteArray& name) const;
    // What is described there; `names` as the library hands them out.
    KX_RegisterCoverage coverage(qint64 address, qint64 length, QByteArray& names) const;

    // Memory by byte; what was never set reads as 0.
    void setMemory(qint64 address, const QByteArray& bytes);
    void setWord(qint64 address, quint32 word); // as a little-endian host reads it
    QByteArray memory(qint64 address, int length) const;
    quint32 word(qint64 address) const;
    void makeUnreadable(qint64 address, qint64 length);
    void makeUnwritable(qint64 address, qint64 length);
    void rejectUnaligned(bool on = true); // addresses that are no multiple of 4, as GigE Vision does

    // The description, answered as the library's header says...
    void setDescription(const QByteArray& text);
    // ...or one answer a call; the last one stays.
    void setDescriptionAnswers(std::vector<DescriptionAnswer> answers);

    // The first rule that matches decides.
    void addRule(const CallRule& rule);
    void clearRules();

    using Effect = std::function<void(ScriptedDevice&)>;
    void afterSet(const QByteArray& name, Effect effect);
    void afterWrite(qint64 address, Effect effect);

    // From now on every call on this camera gives that status, and its connection-lost handlers are told.
    void loseConnection(KX_Status status = KX_E_CONNECTION_LOST);

    const QByteArray& serial() const { return m_serial; }

    // What the rules say to a call, which counts for them.
    KX_Status ruledStatus(const QByteArray& operation, const QByteArray& name, std::optional<qint64> address);

private:
    friend class ScriptedCall;
    using Range = std::pair<qint64, qint64>; // begin, end
    struct DescribedRegister
    {
        QByteArray name;
        Range range;
        bool isEverWritable;
    };

    bool touches(const std::vector<Range>& ranges, qint64 address, qint64 length) const;
    KX_Status read(void* buffer, qint64 address, qint64 length) const;
    KX_Status write(const void* buffer, qint64 address, qint64 length);
    KX_Status describe(void* buffer, quint32 size, quint32* length);
    void runEffects(const std::vector<Effect>& effects);

    struct CountedRule
    {
        CallRule rule;
        int calls = 0;
    };

    mutable std::recursive_mutex m_mutex;
    QByteArray m_serial;
    std::map<QByteArray, ScriptedNode> m_nodes;
    std::map<qint64, quint8> m_bytes;
    std::vector<Range> m_unreadable, m_unwritable;
    std::vector<DescribedRegister> m_registers;
    bool m_rejectsUnaligned = false;
    bool m_hasUnplacedRegister = false;
    QByteArray m_description;
    std::vector<DescriptionAnswer> m_answers;
    std::size_t m_nextAnswer = 0;
    std::vector<CountedRule> m_rules;
    std::map<QByteArray, std::vector<Effect>> m_setEffects;
    std::map<qint64, std::vector<Effect>> m_writeEffects;
    KX_Status m_lost = KX_OK;
};

// Forgets all devices, handles, hooks, buffers and violations, not the Recorder's entries. No call may be
// running.
void resetScriptedCamera();

// The camera of that serial number, made when there is none.
ScriptedDevice& scriptedDevice(const QByteArray& serial);

// Records for it; each transport's part is filled, the other parts with texts that no test should ever see.
KX_DeviceInfo deviceInfo(quint32 transportType, const QByteArray& serial, const QByteArray& model);

// Called on the calling thread when a call has been entered and before it does anything; may block. With the
// serial number of the camera, empty where the handle is null or unknown.
using CallHook = std::function<void(const QByteArray& serial, const TraceEntry& call)>;
void setCallHook(CallHook hook);

// What a search for cameras finds, in place of all scripted devices; runs on the searching thread, may block,
// and leaves no entry in the record. Null: the scripted devices again.
using DeviceSearch = std::function<std::vector<KX_DeviceEntry>()>;
void setDeviceSearch(DeviceSearch search);

// Handles created and not destroyed.
int livingHandles();

// What a correct caller never does: a handle used after its end, a string record that was not zeroed, a null
// buffer or name, a read beyond its buffer. Buffers are known from guardBuffer(), and under AddressSanitizer
// all are; a call that would run over one is refused with KX_E_PARAMETER.
QStringList cameraViolations();
void guardBuffer(const void* begin, std::size_t size);

// Holds threads until it is opened.
class Gate
{
public:
    void pass();                 // waits until the gate is open
    void waitForArrivals(int n); // waits until n threads have come to pass()
    void open();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_arrived = 0;
    bool m_open = false;
};

} // namespace tests
