// Reads features over an open handle as jobs do, and tells what a feature would take.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace companion
{

class FeatureReader
{
public:
    // The handle must outlive the reader.
    explicit FeatureReader(KX_HANDLE handle) : m_handle(handle) {}

    struct Reading
    {
        KX_Status status = KX_OK;
        QString text; // as a features file has it; null: not read
        std::optional<KX_IntegerValue> integer;
        std::optional<qint64> incrementOrigin; // of an integer whose increment is not 1
        std::optional<KX_EnumValue> enumeration;
        std::optional<KX_FloatValue> real;
        std::optional<KX_StringValue> string;
        bool isGood() const { return status == KX_OK; }
    };
    // `type`: one of the six type words of features files.
    Reading read(const QString& type, const QString& name);
    // `bytes` become as long as `length`; it must be in the range that the camera library takes.
    KX_Status readMemory(qint64 address, qint64 length, QByteArray& bytes);

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
    void readInteger(const char* name, Reading& reading);

    KX_HANDLE m_handle;
    KX_Status m_lineStatus = KX_OK;
};

// Why the feature would not take a value (in the words of a features file); null: nothing speaks against it.
QString rangeObjection(const FeatureReader::Reading& reading, const QString& value);

} // namespace companion
