// Reads features over an open handle as jobs do, and tells what a feature would take.
#pragma once

#include "jobs/nodes/FeatureKind.h"

#include <QString>

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

    struct Reading : ie::FeatureReading
    {
        std::optional<qint64> incrementOrigin; // of an integer whose increment is not 1
    };
    Reading read(ie::FeatureKind kind, const QString& name);
    // `length` in bytes, in the range that the camera library takes.
    KX_Status readMemory(qint64 address, qint64 length, void* buffer);

    struct Access
    {
        KX_Status status = KX_OK;
        KX_XML_AccessMode mode = KX_AM_NOT_IMPLEMENTED;
        bool isWritable() const;
        bool isAbsent() const; // the camera has no such feature
        QString text() const;  // "read-only now"
    };
    Access access(const QString& name);

    // The status of the first call that the line failed; KX_OK: none. Answers since then mean nothing.
    KX_Status lineStatus() const { return m_lineStatus; }

private:
    KX_Status note(KX_Status status);

    const KX_HANDLE m_handle;
    const ie::NodeAccess m_camera{m_handle, ie::NodeAccess::FailureLog::Silent};
    KX_Status m_lineStatus = KX_OK;
};

// Why the feature would not take a value (in the words of a features file); null: nothing speaks against it.
QString rangeObjection(const FeatureReader::Reading& reading, const QString& value);

} // namespace companion
