#include "ScriptedCamera.h"
#include "ScriptedHandles.h"

#include <algorithm>
#include <cstring>

namespace tests
{

using Lock = std::lock_guard<std::recursive_mutex>;

ScriptedDevice::ScriptedDevice(QByteArray serial) : m_serial(std::move(serial)) {}

void ScriptedDevice::setBool(const QByteArray& name, bool value)
{
    const Lock lock(m_mutex);
    m_nodes[name].boolean = value;
}

void ScriptedDevice::setInteger(const QByteArray& name, qint64 current, qint64 minimum, qint64 maximum,
                                qint64 increment)
{
    KX_IntegerValue value{};
    value.current = current;
    value.minimum = minimum;
    value.maximum = maximum;
    value.increment = increment;
    const Lock lock(m_mutex);
    m_nodes[name].integer = value;
}

void ScriptedDevice::setEnumeration(const QByteArray& name, quint32 current,
                                    const std::vector<quint32>& supported)
{
    KX_EnumValue value{};
    value.current = current;
    value.supportedCount = quint32(supported.size());
    std::copy_n(supported.begin(), std::min<std::size_t>(supported.size(), KX_ENUM_CAPACITY),
                value.supported);
    const Lock lock(m_mutex);
    m_nodes[name].enumeration = value;
}

void ScriptedDevice::setFloat(const QByteArray& name, float current)
{
    KX_FloatValue value{};
    value.current = current;
    value.minimum = std::numeric_limits<float>::lowest();
    value.maximum = std::numeric_limits<float>::max();
    const Lock lock(m_mutex);
    m_nodes[name].real = value;
}

void ScriptedDevice::setString(const QByteArray& name, const QByteArray& current, qint64 maximumLength)
{
    KX_StringValue value{};
    std::memcpy(value.current, current.constData(),
                std::min(std::size_t(current.size()), sizeof value.current - 1));
    value.maximumLength = maximumLength;
    const Lock lock(m_mutex);
    m_nodes[name].text = value;
}

void ScriptedDevice::setAccessMode(const QByteArray& name, KX_XML_AccessMode mode)
{
    const Lock lock(m_mutex);
    m_nodes[name].accessMode = mode;
}

void ScriptedDevice::removeNode(const QByteArray& name)
{
    const Lock lock(m_mutex);
    m_nodes.erase(name);
}

void ScriptedDevice::setEverWritable(const QByteArray& name, bool writable)
{
    const Lock lock(m_mutex);
    m_nodes[name].isEverWritable = writable;
}

void ScriptedDevice::setRelatedNames(const QByteArray& name, KX_Relation relation, const QByteArray& names)
{
    const Lock lock(m_mutex);
    m_nodes[name].related[relation] = names;
}

void ScriptedDevice::setEntryName(const QByteArray& name, quint32 value, const QByteArray& entry)
{
    const Lock lock(m_mutex);
    m_nodes[name].entries[value] = entry;
}

void ScriptedDevice::addDescribedRegister(const QByteArray& name, qint64 address, qint64 length,
                                          bool isEverWritable)
{
    const Lock lock(m_mutex);
    m_registers.push_back({name, {address, address + length}, isEverWritable});
}

void ScriptedDevice::addUnplacedRegister()
{
    const Lock lock(m_mutex);
    m_hasUnplacedRegister = true;
}

KX_RegisterCoverage ScriptedDevice::coverage(qint64 address, qint64 length, QByteArray& names) const
{
    const Lock lock(m_mutex);
    KX_RegisterCoverage result{};
    result.unplaced = result.unplacedWritable = m_registers.empty() || m_hasUnplacedRegister ? 1 : 0;
    for (const DescribedRegister& described : m_registers) {
        if (!touches({described.range}, address, length))
            continue;
        ++result.registers;
        result.writable += described.isEverWritable ? 1 : 0;
        names += (names.isEmpty() ? "" : "\n") + described.name;
    }
    return result;
}

ScriptedNode ScriptedDevice::node(const QByteArray& name) const
{
    const Lock lock(m_mutex);
    const auto found = m_nodes.find(name);
    return found == m_nodes.end() ? ScriptedNode() : found->second;
}

bool ScriptedDevice::hasNode(const QByteArray& name) const
{
    const Lock lock(m_mutex);
    return m_nodes.count(name) > 0;
}

void ScriptedDevice::setMemory(qint64 address, const QByteArray& bytes)
{
    const Lock lock(m_mutex);
    for (int i = 0; i < bytes.size(); ++i)
        m_bytes[address + i] = quint8(bytes[i]);
}

void ScriptedDevice::setWord(qint64 address, quint32 word)
{
    setMemory(address, QByteArray(reinterpret_cast<const char*>(&word), sizeof word));
}

QByteArray ScriptedDevice::memory(qint64 address, int length) const
{
    const Lock lock(m_mutex);
    QByteArray bytes(length, '\0');
    for (auto byte = m_bytes.lower_bound(address); byte != m_bytes.end() && byte->first - address < length;
         ++byte)
        bytes[int(byte->first - address)] = char(byte->second);
    return bytes;
}

quint32 ScriptedDevice::word(qint64 address) const
{
    quint32 word = 0;
    std::memcpy(&word, memory(address, sizeof word).constData(), sizeof word);
    return word;
}

void ScriptedDevice::makeUnreadable(qint64 address, qint64 length)
{
    const Lock lock(m_mutex);
    m_unreadable.emplace_back(address, address + length);
}

void ScriptedDevice::makeUnwritable(qint64 address, qint64 length)
{
    const Lock lock(m_mutex);
    m_unwritable.emplace_back(address, address + length);
}

void ScriptedDevice::rejectUnaligned(bool on)
{
    const Lock lock(m_mutex);
    m_rejectsUnaligned = on;
}

void ScriptedDevice::setDescription(const QByteArray& text)
{
    const Lock lock(m_mutex);
    m_description = text;
    m_answers.clear();
}

void ScriptedDevice::setDescriptionAnswers(std::vector<DescriptionAnswer> answers)
{
    const Lock lock(m_mutex);
    m_answers = std::move(answers);
    m_nextAnswer = 0;
}

void ScriptedDevice::addRule(const CallRule& rule)
{
    if (!isOperation(rule.operation))
        addViolation("a rule for an unknown operation: " + rule.operation);
    const Lock lock(m_mutex);
    m_rules.push_back({rule, 0});
}

void ScriptedDevice::clearRules()
{
    const Lock lock(m_mutex);
    m_rules.clear();
}

void ScriptedDevice::afterSet(const QByteArray& name, Effect effect)
{
    const Lock lock(m_mutex);
    m_setEffects[name].push_back(std::move(effect));
}

void ScriptedDevice::afterWrite(qint64 address, Effect effect)
{
    const Lock lock(m_mutex);
    m_writeEffects[address].push_back(std::move(effect));
}

void ScriptedDevice::loseConnection(KX_Status status)
{
    {
        const Lock lock(m_mutex);
        m_lost = status;
    }
    tellConnectionLost(*this, status);
}

KX_Status ScriptedDevice::ruledStatus(const QByteArray& operation, const QByteArray& name,
                                      std::optional<qint64> address)
{
    const Lock lock(m_mutex);
    if (m_lost != KX_OK && operation != "CloseDevice" && operation != "DestroyHandle")
        return m_lost;
    KX_Status status = KX_OK;
    for (CountedRule& counted : m_rules) {
        const CallRule& rule = counted.rule;
        if (rule.operation != operation || (rule.name && *rule.name != name) ||
            (rule.address && rule.address != address))
            continue;
        ++counted.calls;
        if (status == KX_OK && counted.calls >= rule.firstCall && counted.calls <= rule.lastCall)
            status = rule.status;
    }
    return status;
}

bool ScriptedDevice::touches(const std::vector<Range>& ranges, qint64 address, qint64 length) const
{
    return std::any_of(ranges.begin(), ranges.end(), [address, length](const Range& range) {
        return address < range.second && range.first - address < length;
    });
}

KX_Status ScriptedDevice::read(void* buffer, qint64 address, qint64 length) const
{
    const Lock lock(m_mutex);
    if (touches(m_unreadable, address, length) || (m_rejectsUnaligned && address % 4 != 0))
        return KX_E_GC_ACCESS;
    std::memcpy(buffer, memory(address, int(length)).constData(), std::size_t(length));
    return KX_OK;
}

KX_Status ScriptedDevice::write(const void* buffer, qint64 address, qint64 length)
{
    const Lock lock(m_mutex);
    if (touches(m_unwritable, address, length) || (m_rejectsUnaligned && address % 4 != 0))
        return KX_E_GC_ACCESS;
    setMemory(address, QByteArray(static_cast<const char*>(buffer), int(length)));
    const auto effects = m_writeEffects.find(address);
    if (effects != m_writeEffects.end())
        runEffects(effects->second);
    return KX_OK;
}

KX_Status ScriptedDevice::describe(void* buffer, quint32 size, quint32* length)
{
    const Lock lock(m_mutex);
    DescriptionAnswer answer;
    if (m_answers.empty()) {
        answer.length = quint32(m_description.size()) + 1;
        if (*answer.length > size)
            answer.status = KX_E_BUFFER_TOO_SMALL;
        else
            answer.bytes = m_description;
    } else {
        answer = m_answers[m_nextAnswer];
        m_nextAnswer = std::min(m_nextAnswer + 1, m_answers.size() - 1);
    }
    const std::size_t taken = std::min<std::size_t>(std::size_t(answer.bytes.size()), size);
    std::memcpy(buffer, answer.bytes.constData(), taken);
    if (taken > 0 && taken < size)
        static_cast<char*>(buffer)[taken] = '\0';
    if (answer.length)
        *length = *answer.length;
    return answer.status;
}

void ScriptedDevice::runEffects(const std::vector<Effect>& effects)
{
    const std::vector<Effect> copies = effects; // an effect may add another
    for (const Effect& effect : copies)
        effect(*this);
}

void Gate::pass()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    ++m_arrived;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_open; });
}

void Gate::waitForArrivals(int n)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this, n] { return m_arrived >= n; });
}

void Gate::open()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_open = true;
    m_changed.notify_all();
}

} // namespace tests
