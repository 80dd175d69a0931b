#include "iefeatures/check/PlainCheck.h"

#include "iefeatures/check/PlainValue.h"

namespace companion
{
namespace
{

void judge(EntryCheck& check, Verdict verdict, const QString& reason = {})
{
    check.verdict = verdict;
    check.reason = reason;
}

} // namespace

EntryCheck PlainCheck::check(const ie::FeaturesContent::Entry& entry)
{
    EntryCheck check;
    check.feature = entry.plain.name;
    check.fileValue = entry.plain.value;
    const QString reason = skipReason(entry);
    if (!reason.isNull())
        judge(check, Verdict::Skipped, reason);
    else if (m_mode == CheckMode::Plan)
        plan(entry.plain, check);
    else
        verify(entry.plain, check);
    return check;
}

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
    // Jobs hold exclusive access while they run, and files are full of it.
    if (feature.name == "GevCCP" && feature.value == "1")
        return "tells who controls the camera: while an import runs, that is the import";
    if (!ie::featureKind(feature.type))
        return "imports write no feature of the type \"" + feature.type + '"';
    return {};
}

void PlainCheck::plan(const ie::PlainFeature& feature, EntryCheck& check)
{
    const ie::FeatureKind kind = *ie::featureKind(feature.type);
    const FeatureReader::Reading reading = m_reader.read(kind, feature.name);
    if (reading.isGood()) {
        check.cameraValue = reading.text;
        if (reading.text == feature.value)
            return;
        const FeatureReader::Access access = m_reader.access(feature.name);
        if (!access.isWritable())
            return judge(check, Verdict::NotWritable, access.text());
    } else {
        planUnread(feature, reading.status, check);
        if (check.verdict != Verdict::Change)
            return;
    }
    const ImportedValue imported = importedValue(kind, feature.value);
    if (!imported.flaw.isNull()) {
        check.isFaithful = false;
        check.warnings += imported.flaw;
    }
    const QString objection = rangeObjection(reading, imported.text);
    if (!objection.isNull())
        return judge(check, Verdict::OutOfRange, objection);
    if (check.isFaithful && reading.isGood() && imported.text == reading.text) {
        check.warnings += "written again: the texts differ, the values do not";
        return;
    }
    check.verdict = Verdict::Change;
    check.newValue = imported.text;
}

// Imports write what they cannot read all the same.
void PlainCheck::planUnread(const ie::PlainFeature& feature, KX_Status status, EntryCheck& check)
{
    if (status != KX_E_GC_ACCESS)
        return judge(check, status == KX_E_GC_PROPERTY ? Verdict::Absent : Verdict::NotWritable,
                     KX_CC_StatusText(status));
    const FeatureReader::Access access = m_reader.access(feature.name);
    if (access.isAbsent())
        return judge(check, Verdict::Absent, access.text());
    if (access.isWritable() && access.mode != KX_AM_WRITE_ONLY)
        return judge(check, Verdict::NotWritable, "the camera refuses its register");
    judge(check, access.isWritable() ? Verdict::Change : Verdict::NotWritable, access.text());
}

void PlainCheck::verify(const ie::PlainFeature& feature, EntryCheck& check)
{
    const ie::FeatureKind kind = *ie::featureKind(feature.type);
    const FeatureReader::Reading reading = m_reader.read(kind, feature.name);
    if (!reading.isGood())
        return verifyUnread(feature, reading.status, check);
    check.cameraValue = reading.text;
    if (ie::isSameValue(kind, feature.value, reading.text))
        return;
    const qint64 increment = reading.integer ? reading.integer->increment : 1;
    if (isCoercedValue(kind, feature.value, reading.text, increment))
        return judge(check, Verdict::Coerced);
    const ImportedValue imported = importedValue(kind, feature.value);
    const FeatureReader::Access access = m_reader.access(feature.name);
    if (!access.isWritable())
        return judge(check, Verdict::NotApplied, access.text());
    if (!imported.flaw.isNull())
        return judge(check, Verdict::NotApplied, imported.flaw);
    judge(check, Verdict::NotApplied, rangeObjection(reading, imported.text));
}

void PlainCheck::verifyUnread(const ie::PlainFeature& feature, KX_Status status, EntryCheck& check)
{
    if (status != KX_E_GC_ACCESS)
        return judge(check, status == KX_E_GC_PROPERTY ? Verdict::Absent : Verdict::NotApplied,
                     KX_CC_StatusText(status));
    const FeatureReader::Access access = m_reader.access(feature.name);
    if (access.isAbsent())
        return judge(check, Verdict::Absent, access.text());
    if (access.status == KX_OK && access.mode == KX_AM_WRITE_ONLY)
        return judge(check, Verdict::Skipped, "write-only: it cannot be read back");
    judge(check, Verdict::NotApplied,
          access.isWritable() ? "the camera refuses its register" : access.text());
}

} // namespace companion
