// Reads features over an open handle as jobs do, and tells what a feature would take.
#pragma once

#include "jobs/nodes/FeatureKind.h"

#include <KXCameraControl/KXCameraControl.h>

#include <QString>
#include <QStringList>

#include <optional>

namespace companion
{

class FeatureReader
{
public:
    // The handle must outlive the reader.
    explicit FeatureReader(KX_HANDLE handle) : m_handle(handle) {}
    FeatureReader(const FeatureReader&) = delete;
    FeatureReader& operator=(const FeatureReader&) = delete;

    KX_HANDLE handle() const { return m_handle; }

    struct Reading : ie::FeatureReading
    {
        std::optional<qint64> incrementOrigin; // of an integer whose increment is not 1
    };
    Reading read(ie::FeatureKind kind, const QString& name);
    // Into `bytes`, which has room for `length`; that must be in the range that the camera library takes.
    KX_Status readMemory(qint64 address, void* bytes, qint64 length);

    // A camera whose description is missing or cannot be used has no feature at all; a sentence, or an empty
    // text. By the category Root, which every description has (GenApi standard).
    QString descriptionProblem();

    struct Access
    {
        KX_Status status = KX_OK;
        KX_XML_AccessMode mode = KX_AM_NOT_IMPLEMENTED;
        bool isWritable() const;
        bool isAbsent() const; // the camera has no such feature
        QString text() const;  // "read-only now"
    };
    Access access(const QString& name);

    // What the description alone says; nothing where it does not say, or where the line failed.
    std::optional<bool> isEverWritable(const QString& name);
    // Of the registers of so many bytes: whether all of them are known, and none is ever written.
    bool isNeverWritten(qint64 address, qint64 length);
    // Whether a register of the description may lie there; true where that is not known.
    bool isCovered(qint64 address, qint64 length);
    QStringList relatedNames(const QString& name, KX_Relation relation); // empty: none, or not known
    QString entryName(const QString& enumeration, uint32_t number);      // empty: it has none

    // The status of the first call that the line failed; KX_OK: none. Answers since then mean nothing.
    KX_Status lineStatus() const { return m_lineStatus; }
    // Its cause, a sentence.
    const QString& lineText() const { return m_lineText; }

private:
    KX_Status note(KX_Status status);

    const KX_HANDLE m_handle;
    const ie::NodeAccess m_nodes{m_handle, ie::NodeAccess::FailureLog::Silent};
    KX_Status m_lineStatus = KX_OK;
    QString m_lineText;
};

// Why the feature would not take a value (in the words of a features file); null: nothing speaks against it.
QString rangeObjection(const FeatureReader::Reading& reading, const QString& value);

} // namespace companion
