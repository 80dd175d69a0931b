#include "iefeatures/check/RegisterCheck.h"

#include "jobs/nodes/RegisterWords.h"
#include "jobs/rules/ImportRules.h"

#include <QVector>
#include <QtEndian>

namespace companion
{
namespace
{

using Words = QVector<quint32>;

void judge(EntryCheck& check, Verdict verdict, const QString& reason = {})
{
    check.verdict = verdict;
    check.reason = reason;
}

quint32 importedWord(const QString& text, EntryCheck& check)
{
    const ie::Imported<quint32> imported = ie::importedWord(text);
    if (!imported.isFaithful) {
        check.isFaithful = false;
        check.warnings +=
            QString("\"%1\" is written as %2: a word is a number of 32 bits").arg(text).arg(imported.value);
    }
    return imported.value;
}

// What the block would hold after an import: what the file gives over what stands there.
Words imported(const Words& current, const ie::RegisterValue& value, EntryCheck& check)
{
    Words words = current;
    const qint64 given = ie::forEachImportedWord(value, words.size(), [&](int index, const QString& text) {
        words[index] = importedWord(text, check);
    });
    if (given > words.size()) {
        check.isFaithful = false;
        check.warnings += QString("the file has %1 values for %2 words: the others are not written")
                              .arg(given)
                              .arg(words.size());
    }
    return words;
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
        judge(whole, Verdict::Skipped, skipped);
    else if (m_mode == CheckMode::Plan && !m_brokenBlock.isNull())
        judge(whole, Verdict::Broken, "imports end before it, at " + m_brokenBlock);
    else if (block.access.isAbsent())
        judge(whole, Verdict::Absent, "its register " + feature.reg + ": " + block.access.text());
    else if (feature.lengthText.isEmpty() || feature.length > ie::RegisterWords::kMaximumLength)
        judge(whole, Verdict::Broken,
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
    if (whole.verdict == Verdict::Broken && m_brokenBlock.isNull() && block.access.isWritable())
        m_brokenBlock = feature.name;
    return {whole};
}

EntryCheck RegisterCheck::checkEntry(const Block& block, const ie::RegisterValue& value)
{
    EntryCheck check;
    check.feature = block.feature.name;
    check.isRegister = true;
    check.address = value.addressText;
    check.fileValue = value.to.isEmpty() ? value.content : value.to;
    if (value.addressText.isEmpty() || value.content.isEmpty()) {
        judge(check, Verdict::Broken,
              value.addressText.isEmpty() ? "the register has no address" : "the register has no value");
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
                           m_reader.readMemory(value.address - 2, 8, bytes) == KX_OK;
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
        return judge(check, Verdict::NotApplied, why);
    judge(check, Verdict::Skipped, why);
    check.warnings += "address " + value.addressText + " is no multiple of 4";
}

void RegisterCheck::compare(const Block& block, const ie::RegisterValue& value, EntryCheck& check)
{
    const qint64 length = block.feature.length;
    ie::RegisterWords words(length, m_isGigE);
    const KX_Status status = length > 0 && words.isAllocated()
                                 ? m_reader.readMemory(value.address, length, words.data())
                                 : KX_E_PARAMETER;
    if (status != KX_OK)
        return judge(check, m_mode == CheckMode::Plan ? Verdict::NotWritable : Verdict::NotApplied,
                     KX_CC_StatusText(status));
    const Words current = words.words();
    check.cameraValue = ie::wordsText(current);
    if (check.cameraValue == check.fileValue)
        return;
    const Words after = imported(current, value, check);
    const bool isSame = after == current && check.isFaithful;
    if (m_mode == CheckMode::Verify) {
        if (isSame)
            return;
        const QString why = block.access.isWritable() ? check.warnings.join("; ")
                                                      : block.feature.reg + ": " + block.access.text();
        check.warnings.clear();
        return judge(check, Verdict::NotApplied, why);
    }
    if (!block.access.isWritable())
        return judge(check, Verdict::NotWritable, block.feature.reg + ": " + block.access.text());
    if (isSame) {
        check.warnings += "written again: the texts differ, the values do not";
        return;
    }
    check.verdict = Verdict::Change;
    check.newValue = ie::wordsText(after);
}

} // namespace companion
