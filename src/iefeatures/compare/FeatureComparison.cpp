#include "iefeatures/compare/FeatureComparison.h"

#include "iefeatures/console/RegisterText.h"

#include <QHash>
#include <QMap>
#include <QPair>

namespace companion
{
namespace
{

using Side = FeatureDifference::Side;

bool operator==(const Side& one, const Side& other)
{
    return one.type == other.type && one.value == other.value;
}

struct Register
{
    QString variables;
    QString text;
};
using Registers = QMap<qint64, Register>;

// A name, and whether it stands for a register block: it may do so in one file and for a value in the other.
using Key = QPair<QString, bool>;

void addRegisters(const ie::RegisterValue& value, Registers& registers)
{
    if (value.converted) {
        registers[value.address] = {value.variables, hexWord(value.to) + " (" + value.content + ')'};
        return;
    }
    qint64 address = value.address;
    for (const QString& word : hexWords(value.content)) {
        registers[address] = {value.variables, word};
        address += 4;
    }
}

// The features of one file, of each name the last one.
class Features
{
public:
    explicit Features(const ie::FeaturesContent& content)
    {
        for (const auto& entry : content.entries) {
            if (entry.isComplex)
                take({entry.complex.name, true}, blockSide(entry.complex), registersOf(entry.complex));
            else
                take({entry.plain.name, false}, {entry.plain.type, entry.plain.value, {}}, {});
        }
    }

    const QList<Key>& keys() const { return m_keys; }
    std::optional<Side> side(const Key& key) const
    {
        const auto found = m_sides.find(key);
        return found == m_sides.end() ? std::optional<Side>() : *found;
    }
    Registers registers(const Key& key) const { return m_registers.value(key); }

private:
    void take(const Key& key, const Side& side, const Registers& registers)
    {
        if (!m_sides.contains(key))
            m_keys.append(key);
        m_sides[key] = side;
        m_registers[key] = registers;
    }

    static Side blockSide(const ie::ComplexFeature& block)
    {
        return {"Register", QString("%1 bytes of %2").arg(block.length).arg(block.reg), {}};
    }

    static Registers registersOf(const ie::ComplexFeature& block)
    {
        Registers registers;
        for (const ie::RegisterValue& value : block.values)
            addRegisters(value, registers);
        return registers;
    }

    QList<Key> m_keys; // in the file's order
    QHash<Key, Side> m_sides;
    QHash<Key, Registers> m_registers;
};

QList<RegisterDifference> compareRegisters(const Registers& a, const Registers& b)
{
    QMap<qint64, RegisterDifference> differences;
    for (auto it = a.cbegin(); it != a.cend(); ++it)
        differences[it.key()] = {it.key(), it->variables, it->text, {}};
    for (auto it = b.cbegin(); it != b.cend(); ++it) {
        RegisterDifference& difference = differences[it.key()];
        if (difference.a && *difference.a == it->text) {
            differences.remove(it.key());
            continue;
        }
        difference.address = it.key();
        difference.b = it->text;
        if (!difference.a)
            difference.variables = it->variables;
    }
    return differences.values();
}

QList<FeatureDifference> compareHeaders(const ie::FeaturesHeader& a, const ie::FeaturesHeader& b)
{
    QList<FeatureDifference> differences;
    const auto take = [&](const char* name, const std::optional<Side>& inA, const std::optional<Side>& inB) {
        if (inA.has_value() != inB.has_value() || (inA && !(*inA == *inB)))
            differences += {name, inA, inB, {}};
    };
    const auto boardType = [](const ie::FeaturesHeader& header) {
        return header.hasBoardType ? std::optional<Side>({{}, header.boardType, {}}) : std::nullopt;
    };
    take("version", {{{}, a.version, {}}}, {{{}, b.version, {}}});
    take("DeviceFirmwareVersion", {{{}, a.firmware, {}}}, {{{}, b.firmware, {}}});
    take("DeviceModelName", {{{}, a.model, {}}}, {{{}, b.model, {}}});
    take("BoardDeviceType", boardType(a), boardType(b));
    return differences;
}

QList<FeatureDifference> compareAll(const Features& a, const Features& b)
{
    QList<Key> keys = a.keys();
    for (const Key& key : b.keys())
        if (!a.side(key))
            keys.append(key);
    QList<FeatureDifference> differences;
    for (const Key& key : qAsConst(keys)) {
        FeatureDifference difference{key.first, a.side(key), b.side(key), {}};
        difference.registers = compareRegisters(a.registers(key), b.registers(key));
        const bool isSame = difference.a && difference.b && *difference.a == *difference.b;
        if (!isSame || !difference.registers.isEmpty())
            differences += difference;
    }
    return differences;
}

} // namespace

FeatureComparison compareFeatures(const ie::FeaturesContent& a, const ie::FeaturesContent& b,
                                  const WhyLeftOut& whyLeftOut)
{
    FeatureComparison comparison;
    const auto keep = [&](const QList<FeatureDifference>& from, bool isHeader,
                          QList<FeatureDifference>& kept) {
        for (const FeatureDifference& difference : from) {
            if (const auto why = whyLeftOut(difference, isHeader))
                comparison.leftOut += LeftOut{difference.name, *why};
            else
                kept += difference;
        }
    };
    keep(compareHeaders(a.header, b.header), true, comparison.header);
    keep(compareAll(Features(a), Features(b)), false, comparison.features);
    return comparison;
}

} // namespace companion
