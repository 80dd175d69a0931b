#include "companion/RegisterRule.h"

#include "gvcp/Gvcp.h"

#include <SuiteTools/SuiteTools.h>

#include <QtEndian>

namespace tests
{
namespace
{

quint32 exchanged(quint32 word)
{
    return word >> 16 | word << 16;
}

// Fills the words of a register as an export reads it over GigE Vision: an address that is no multiple of 4
// gives the first word alone, with its halves exchanged.
void readWords(const emu::EmulatedCamera& camera, qint64 address, qint64 length, QVector<quint32>& words)
{
    const auto start = static_cast<uint32_t>(address);
    if (address % 4 != 0) {
        words[0] = exchanged(qFromLittleEndian<quint32>(camera.peek(start, 4).data()));
        return;
    }
    emu::Bytes bytes = camera.peek(start, static_cast<size_t>(length));
    for (int rest = words.size() * 4 - int(length), i = 0; i < rest; ++i)
        bytes.push_back(static_cast<uint8_t>(words.last() >> 8 * (4 - rest + i))); // untouched by the read
    for (int i = 0; i < words.size(); ++i)
        words[i] = qFromLittleEndian<quint32>(bytes.data() + 4 * i);
}

QString plainContent(QVector<quint32> words, qint64 address, bool swap)
{
    QStringList texts;
    for (quint32 word : qAsConst(words)) {
        if (swap && address % 4 != 0)
            word = exchanged(word);
        texts += QString::number(swap ? qbswap(word) : word);
    }
    return texts.join(',');
}

QString rawWord(quint32 first, qint64 address, bool swap)
{
    const quint32 raw = swap ? qbswap(first) : first;
    return QString::number(address % 4 != 0 ? exchanged(raw) : raw);
}

QString converted(QString formula, const QString& raw)
{
    bool ok = false;
    const double value = VELAInterface::Compute(formula.replace("TO", raw).toUtf8(), ok);
    return ok ? QString::number(value, 'f', 6) : "no value of " + formula;
}

} // namespace

QStringList registerDifferences(const ie::ComplexFeature& feature, const emu::EmulatedCamera& camera)
{
    if (feature.length <= 0)
        return {"length " + QString::number(feature.length)};
    QStringList differences;
    const bool swap = feature.length == 4;
    QVector<quint32> words(int((feature.length + 3) / 4), 0);
    for (const ie::RegisterValue& value : feature.values) {
        if (value.address == gvcp::RegPrimaryPort)
            continue;
        readWords(camera, value.address, feature.length, words);
        const QString raw = rawWord(words[0], value.address, swap);
        const QString wanted =
            value.converted ? converted(value.from, raw) : plainContent(words, value.address, swap);
        if (value.content != wanted || (value.converted && value.to != raw))
            differences += QString("%1: %2 to %3, not %4 to %5")
                               .arg(QString::number(value.address), value.content, value.to, wanted, raw);
    }
    return differences;
}

} // namespace tests
