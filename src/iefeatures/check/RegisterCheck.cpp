#include "iefeatures/check/RegisterCheck.h"

#include "iefeatures/console/RegisterText.h"

#include "jobs/nodes/RegisterWords.h"
#include "jobs/rules/ImportRules.h"

#include <QVector>
#include <QtEndian>

#include <algorithm>

namespace companion
{
namespace
{

// Where an import writes something else than the file says.
void tellFlaws(const ie::RegisterValue& value, int words, EntryCheck& check)
{
    const auto flaw = [&check](const QString& text) {
        check.isFaithful = false;
        check.warnings += text;
    };
    const qint64 given = ie::forEachImportedWord(value, words, [&](int, const QString& text) {
        const ie::Imported<quint32> imported = ie::importedWord(text);
        if (!imported.isFaithful)
            flaw(QString("\"%1\" is written as %2: a word is a number of 32 bits")
                     .arg(text)
                     .arg(imported.value));
    });
    if (given > words)
        flaw(
            QString("the file has %1 values for %2 words: the others are not written").arg(given).arg(words));
}

} // namespace

struct RegisterCheck::Block
{
    const ie::ComplexFeature& feature;
    FeatureReader::Access access; // of its register; writable where the file names none
};

std::vector<EntryCheck> RegisterCheck::check(const ie::ComplexFeature& feature)
{
    EntryCheck whole;
    whole.feature = feature.name;
    whole.isRegister = true;
    const QString skipped = m_skips.reason(feature.name);
    Block block{feature, {KX_OK, KX_AM_READ_WRITE}};
    if (skipped.isNull() && !feature.reg.isEmpty())
        block.access = m_reader.access(feature.reg);
    if (!skipped.isNull())
        whole.judge(EntryVerdict::Skipped, skipped);
    else if (m_mode == CheckMode::Plan && !m_brokenBlock.isNull())
        whole.judge(EntryVerdict::Broken, "imports end before it, at " + m_brokenBlock);
    else if (block.access.isAbsent() && !isThereAllTheSame(block))
        whole.judge(EntryVerdict::Absent, "its register " + feature.reg + ": " + block.access.text());
    else if (feature.lengthText.isEmpty() || feature.length > ie::RegisterWords::kMaximumLength)
        whole.judge(EntryVerdict::Broken,
                    feature.lengthText.isEmpty() ? "the block has no length" : "the block is too large");
    else {
        std::vector<EntryCheck> checks;
        for (const ie::RegisterValue& value : feature.values) {
            checks.push_back(checkEntry(block, value));
            if (m_reader.lineStatus() != KX_OK || !m_brokenBlock.isNull())
                break;
        }
        return checks;
    }
    if (whole.verdict == EntryVerdict::Broken && m_brokenBlock.isNull() && block.access.isWritable())
        m_brokenBlock = feature.name;
    return {whole};
}

// Exports and imports go by addresses: a register that its camera does not implement now may hold the file's
// value.
bool RegisterCheck::isThereAllTheSame(const Block& block)
{
    return block.access.status == KX_OK &&
           std::all_of(block.feature.values.begin(), block.feature.values.end(),
                       [&](const ie::RegisterValue& value) {
                           return checkEntry(block, value).verdict == EntryVerdict::Unchanged;
                       });
}

EntryCheck RegisterCheck::checkEntry(const Block& block, const ie::RegisterValue& value)
{
    EntryCheck check;
    check.feature = block.feature.name;
    check.isRegister = true;
    if (!value.addressText.isEmpty())
        check.address = value.address;
    check.fileValue = value.to.isEmpty() ? value.content : value.to;
    if (value.addressText.isEmpty() || value.content.isEmpty()) {
        check.judge(EntryVerdict::Broken, value.addressText.isEmpty() ? "the register has no address"
                                                                      : "the register has no value");
        if (block.access.isWritable() && m_mode == CheckMode::Plan)
            m_brokenBlock = check.feature;
    } else if (value.address % 4 != 0) {
        checkUnaligned(block, value, check);
    } else {
        compare(block, value, check);
    }
    return check;
}

// Imports pass over it. Exports on GigE read 4 bytes between two words around the address; so it is known
// here whether anything is lost.
void RegisterCheck::checkUnaligned(const Block& block, const ie::RegisterValue& value, EntryCheck& check)
{
    const qint64 length = block.feature.length;
    char bytes[8] = {};
    const bool canBeRead = m_isGigE && value.address % 4 == 2 && length > 0 && length <= 4 &&
                           m_reader.readMemory(value.address - 2, bytes, sizeof bytes) == KX_OK;
    if (canBeRead) {
        const auto word = qFromLittleEndian<quint32>(bytes + 2);
        const quint32 halvesExchanged = word << 16 | word >> 16;
        check.cameraValue = QString::number(length == 4          ? qbswap(word)
                                            : value.to.isEmpty() ? halvesExchanged
                                                                 : word);
        if (check.cameraValue == check.fileValue)
            return;
        check.isFaithful = false;
    }
    const QString why = "imports pass over an address that is no multiple of 4";
    if (m_mode == CheckMode::Verify && canBeRead)
        return check.judge(EntryVerdict::NotApplied, why);
    check.judge(EntryVerdict::Skipped, why);
    check.warnings += "address " + hexAddress(value.address) + " is no multiple of 4";
}

void RegisterCheck::compare(const Block& block, const ie::RegisterValue& value, EntryCheck& check)
{
    ie::RegisterWords words(block.feature.length, m_isGigE);
    const KX_Status status = words.isAllocated() && words.length() > 0
                                 ? m_reader.readMemory(value.address, words.data(), words.length())
                                 : KX_E_PARAMETER;
    if (status != KX_OK)
        return check.judge(m_mode == CheckMode::Plan ? EntryVerdict::NotWritable : EntryVerdict::NotApplied,
                           KX_CC_StatusText(status));
    check.cameraValue = words.text();
    if (check.cameraValue == check.fileValue)
        return;
    tellFlaws(value, words.count(), check);
    const QVector<quint32> current = words.words();
    words.take(value);
    const bool isSame = words.words() == current && check.isFaithful;
    if (m_mode == CheckMode::Verify) {
        if (isSame)
            return;
        const QString why = block.access.isWritable() ? check.warnings.join("; ")
                                                      : block.feature.reg + ": " + block.access.text();
        check.warnings.clear();
        return check.judge(EntryVerdict::NotApplied, why);
    }
    if (!block.access.isWritable())
        return check.judge(EntryVerdict::NotWritable, block.feature.reg + ": " + block.access.text());
    if (isSame) {
        check.warnings += "written again: the texts differ, the values do not";
        return;
    }
    check.verdict = EntryVerdict::WouldChange;
    check.newValue = words.text();
}

} // namespace companion
