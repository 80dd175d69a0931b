#include "iefeatures/imports/FeatureWrites.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/Controller.h"
#include "iefeatures/cameras/LiveFeature.h"

#include <cmath>

namespace companion
{
namespace
{

class Writer
{
public:
    Writer(KX_HANDLE handle, FeatureWrites& result)
        : m_handle(handle), m_reader(handle), m_result(result), m_description(descriptionText(handle))
    {}

    void run(const std::vector<Assignment>& assignments, const std::function<bool()>& mayGoOn)
    {
        for (const Assignment& assignment : assignments)
            if (!isMeaningful(assignment))
                return;
        for (const Assignment& assignment : assignments) {
            if (!mayGoOn())
                return conclude(CameraVerdict::Interrupted, {});
            const EntryCheck entry = assignment.isCommand ? execute(assignment) : write(assignment);
            m_result.check.entries.push_back(entry);
            if (m_reader.lineStatus() != KX_OK)
                m_failure = m_reader.lineText();
            if (!m_failure.isEmpty())
                return conclude(CameraVerdict::Failed, m_failure);
            if (isAmiss(entry))
                return conclude(CameraVerdict::Incomplete, {});
        }
        conclude(CameraVerdict::Applied, {});
    }

private:
    void conclude(CameraVerdict verdict, const QString& error)
    {
        m_result.check.verdict = verdict;
        m_result.check.error = error;
    }

    static EntryCheck entryOf(const Assignment& assignment, EntryVerdict verdict, const QString& why = {})
    {
        EntryCheck entry;
        entry.feature = assignment.feature;
        if (!assignment.isCommand)
            entry.fileValue = assignment.value;
        entry.judge(verdict, why);
        return entry;
    }

    // Of names and words: what a feature takes may hang on those that are set before it.
    bool isMeaningful(const Assignment& assignment)
    {
        if (assignment.isCommand)
            return true;
        const LiveFeature feature = readLiveFeature(m_reader, assignment.feature);
        QString problem = feature.problem;
        if (feature.isRead())
            problem = meant(feature, assignment).problem;
        if (problem.isEmpty())
            return true;
        const bool isAbsent = feature.reading.status == KX_E_GC_PROPERTY;
        m_result.check.entries.push_back(
            entryOf(assignment, isAbsent ? EntryVerdict::Absent : EntryVerdict::NotApplied, problem));
        if (m_reader.lineStatus() != KX_OK)
            conclude(CameraVerdict::Failed, problem);
        else
            conclude(CameraVerdict::Incomplete, "Nothing was written.");
        return false;
    }

    MeantValue meant(const LiveFeature& feature, const Assignment& assignment)
    {
        return meantValue(m_reader, feature, unitOf(m_description, feature.name), assignment.value);
    }

    EntryCheck execute(const Assignment& assignment)
    {
        const KX_Status status = KX_CC_ExecuteCommand(m_handle, assignment.feature.toUtf8());
        if (KX_IS_LINE_FAILURE(status)) {
            m_result.doubt(assignment.feature, {});
            m_failure = KX_CC_StatusText(status);
        }
        if (status != KX_OK)
            return entryOf(assignment,
                           status == KX_E_GC_PROPERTY ? EntryVerdict::Absent : EntryVerdict::NotApplied,
                           KX_CC_StatusText(status));
        m_result.changes.push_back({assignment.feature, false, 0, {}, "executed"});
        return entryOf(assignment, EntryVerdict::Applied);
    }

    EntryCheck write(const Assignment& assignment)
    {
        const LiveFeature before = readLiveFeature(m_reader, assignment.feature);
        if (!before.isRead())
            return entryOf(assignment, EntryVerdict::NotApplied, before.problem);
        const MeantValue wanted = meant(before, assignment);
        if (!wanted.problem.isEmpty())
            return entryOf(assignment, EntryVerdict::NotApplied, wanted.problem);
        if (before.reading.text == wanted.text)
            return entryOf(assignment, EntryVerdict::Unchanged);
        EntryCheck entry = entryOf(assignment, EntryVerdict::Applied);
        entry.cameraValue = before.value;
        if (const auto access = m_reader.access(assignment.feature); !access.isWritable())
            entry.judge(EntryVerdict::NotWritable, access.text());
        else if (const QString objection = rangeObjection(before.reading, wanted.text); !objection.isNull())
            entry.judge(EntryVerdict::OutOfRange, objection);
        else
            write(before, wanted.text, entry);
        return entry;
    }

    void write(const LiveFeature& before, const QString& wanted, EntryCheck& entry)
    {
        const KX_Status status = writeLiveFeature(m_handle, before, wanted);
        const LiveFeature after = readLiveFeature(m_reader, before.name);
        entry.cameraValue = after.value;
        if (!after.isRead() && KX_IS_LINE_FAILURE(status))
            m_result.doubt(before.name, before.value);
        else if (status == KX_OK || (after.isRead() && after.value != before.value))
            m_result.changes.push_back(
                {before.name, false, 0, before.value, after.isRead() ? after.value : entry.fileValue});
        if (status != KX_OK)
            return entry.judge(EntryVerdict::NotApplied, KX_CC_StatusText(status));
        if (after.isRead() && !ie::isSameValue(*before.kind, wanted, after.reading.text) &&
            !isRounded(after, wanted))
            entry.judge(EntryVerdict::NotApplied, "the camera took another value");
    }

    // Of floats: as the number reads back in six digits, or as near as 32 bits come.
    static bool isRounded(const LiveFeature& after, const QString& wanted)
    {
        return after.kind == ie::FeatureKind::Float && after.reading.real &&
               std::abs(after.reading.real->current - wanted.toFloat()) <= std::abs(wanted.toFloat()) * 1e-5f;
    }

    const KX_HANDLE m_handle;
    FeatureReader m_reader;
    FeatureWrites& m_result;
    const QByteArray m_description;
    QString m_failure; // of the line; empty: none
};

} // namespace

void FeatureWrites::doubt(const QString& feature, const QString& from)
{
    inDoubt.push_back({feature, false, 0, from, {}});
    check.inDoubt += feature;
}

FeatureWrites writeFeatures(const ListedCamera& camera, const std::vector<Assignment>& assignments,
                            const std::function<bool()>& mayGoOn)
{
    FeatureWrites result;
    result.check.camera = camera;
    if (!mayGoOn())
        return result;
    const CameraConnection connection(camera.device.stDeviceInfo, KX_ACCESS_EXCLUSIVE);
    if (connection.status() != KX_OK) {
        result.check.verdict = CameraVerdict::Failed;
        result.check.error = QString("the camera could not be opened: ") +
                             openingFailure(camera.device.stDeviceInfo, connection.status());
        return result;
    }
    Writer(connection.handle(), result).run(assignments, mayGoOn);
    return result;
}

} // namespace companion
