#include "iefeatures/check/PlainCheck.h"

#include "iefeatures/check/PlainValue.h"

namespace companion
{

EntryCheck PlainCheck::check(const ie::FeaturesContent::Entry& entry)
{
    EntryCheck check;
    check.feature = entry.plain.name;
    check.fileValue = entry.plain.value;
    const QString reason = skipReason(entry);
    if (!reason.isNull())
        check.judge(EntryVerdict::Skipped, reason);
    else if (m_mode == CheckMode::Plan)
        plan(*ie::featureKind(entry.plain.type), check);
    else
        verify(*ie::featureKind(entry.plain.type), check);
    return check;
}

// Null: it is not left alone, and its type is known.
QString PlainCheck::skipReason(const ie::FeaturesContent::Entry& entry)
{
    for (const QString& name : entry.names) {
        const QString reason = m_skips.reason(name);
        if (!reason.isNull())
            return reason;
    }
    const ie::PlainFeature& feature = entry.plain;
    if (feature.name.isEmpty() || feature.type.isEmpty() || feature.value.isEmpty())
        return QString("the file gives no ") + (feature.name.isEmpty()   ? "name"
                                                : feature.type.isEmpty() ? "type"
                                                                         : "value");
    if (!ie::featureKind(feature.type))
        return "imports write no feature of the type \"" + feature.type + '"';
    return {};
}

void PlainCheck::plan(ie::FeatureKind kind, EntryCheck& check)
{
    const FeatureReader::Reading reading = m_reader.read(kind, check.feature);
    if (reading.isGood()) {
        check.cameraValue = reading.text;
        if (reading.text == check.fileValue)
            return;
        const FeatureReader::Access access = m_reader.access(check.feature);
        if (!access.isWritable())
            return check.judge(EntryVerdict::NotWritable, access.text());
    } else {
        planUnread(reading.status, check);
        if (check.verdict != EntryVerdict::WouldChange)
            return;
    }
    const ImportedValue imported = importedValue(kind, check.fileValue);
    if (!imported.flaw.isNull()) {
        check.isFaithful = false;
        check.warnings += imported.flaw;
    }
    const QString objection = rangeObjection(reading, imported.text);
    if (!objection.isNull())
        return check.judge(EntryVerdict::OutOfRange, objection);
    if (check.isFaithful && reading.isGood() && imported.text == reading.text) {
        check.warnings += "written again: the texts differ, the values do not";
        return;
    }
    check.verdict = EntryVerdict::WouldChange;
    check.newValue = imported.text;
}

// Imports write what they cannot read all the same.
void PlainCheck::planUnread(KX_Status status, EntryCheck& check)
{
    if (status != KX_E_GC_ACCESS)
        return check.judge(status == KX_E_GC_PROPERTY ? EntryVerdict::Absent : EntryVerdict::NotWritable,
                           KX_CC_StatusText(status));
    const FeatureReader::Access access = m_reader.access(check.feature);
    if (access.isAbsent())
        return check.judge(EntryVerdict::Absent, access.text());
    if (access.isWritable() && access.mode != KX_AM_WRITE_ONLY)
        return check.judge(EntryVerdict::NotWritable, "the camera refuses its register");
    check.judge(access.isWritable() ? EntryVerdict::WouldChange : EntryVerdict::NotWritable, access.text());
}

void PlainCheck::verify(ie::FeatureKind kind, EntryCheck& check)
{
    const FeatureReader::Reading reading = m_reader.read(kind, check.feature);
    if (!reading.isGood())
        return verifyUnread(reading.status, check);
    check.cameraValue = reading.text;
    if (ie::isSameValue(kind, check.fileValue, reading.text))
        return;
    const qint64 increment = reading.integer ? reading.integer->increment : 1;
    if (isCoercedValue(kind, check.fileValue, reading.text, increment))
        return check.judge(EntryVerdict::Coerced);
    const ImportedValue imported = importedValue(kind, check.fileValue);
    const FeatureReader::Access access = m_reader.access(check.feature);
    if (!access.isWritable())
        return check.judge(EntryVerdict::NotApplied, access.text());
    if (!imported.flaw.isNull())
        return check.judge(EntryVerdict::NotApplied, imported.flaw);
    check.judge(EntryVerdict::NotApplied, rangeObjection(reading, imported.text));
}

void PlainCheck::verifyUnread(KX_Status status, EntryCheck& check)
{
    if (status != KX_E_GC_ACCESS)
        return check.judge(status == KX_E_GC_PROPERTY ? EntryVerdict::Absent : EntryVerdict::NotApplied,
                           KX_CC_StatusText(status));
    const FeatureReader::Access access = m_reader.access(check.feature);
    if (access.isAbsent())
        return check.judge(EntryVerdict::Absent, access.text());
    if (access.status == KX_OK && access.mode == KX_AM_WRITE_ONLY)
        return check.judge(EntryVerdict::Skipped, "write-only: it cannot be read back");
    check.judge(EntryVerdict::NotApplied,
                access.isWritable() ? "the camera refuses its register" : access.text());
}

} // namespace companion
