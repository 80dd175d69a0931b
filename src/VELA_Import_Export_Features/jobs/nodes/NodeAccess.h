// The features and registers of one camera over its handle.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QString>

namespace ie
{

// Every operation tells whether it succeeded and stores the camera library's status in `*code` whenever that
// was asked; without a handle nothing is asked, accessMode() apart. Blocks as long as the camera library
// does.
class NodeAccess
{
public:
    enum class FailureLog
    {
        Written, // of texts, access modes and writes, as jobs do
        Silent
    };

    // `handle` is read at each call and must outlive the object.
    explicit NodeAccess(const KX_HANDLE& handle, FailureLog log = FailureLog::Written)
        : m_handle(handle), m_log(log)
    {}

    bool getBoolean(const QString& name, bool* value, int* code = nullptr) const;
    bool getEnumeration(const QString& name, KX_EnumValue* value, int* code = nullptr) const;
    bool getFloat(const QString& name, KX_FloatValue* value, int* code = nullptr) const;
    bool getInteger(const QString& name, KX_IntegerValue* value, int* code = nullptr) const;
    // Empties `value` when the camera library fails. `*maximumLength` in bytes.
    bool getString(const QString& name, QString& value, qint64* maximumLength = nullptr,
                   int* code = nullptr) const;

    // The library is asked without a handle too, which it reports; "not implemented" on failure.
    KX_XML_AccessMode accessMode(const QString& name, int* code = nullptr) const;
    // Whether the mode could be asked and allows writing.
    bool isWritable(const QString& name) const;

    // Without a name nothing is asked.
    bool setBoolean(const QString& name, bool value, int* code = nullptr);
    bool setEnumeration(const QString& name, quint32 value, int* code = nullptr);
    bool setFloat(const QString& name, float value, int* code = nullptr);
    bool setInteger(const QString& name, qint64 value, int* code = nullptr);
    // At most 255 bytes in the suite's encoding go to the camera.
    bool setString(const QString& name, const QString& value, int* code = nullptr);

    // `length` in bytes.
    bool readMemory(qint64 address, void* buffer, qint64 length, int* code = nullptr) const;
    bool writeMemory(qint64 address, void* buffer, qint64 length, int* code = nullptr);

private:
    bool isDone(KX_Status status, int* code) const;
    bool isDone(KX_Status status, int* code, const char* operation, const QString& name) const;

    const KX_HANDLE& m_handle;
    const FailureLog m_log;
};

} // namespace ie
