// What was written to a camera, from what to what, as its calls were seen to go well.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QByteArray>
#include <QString>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace companion
{

struct Change
{
    QString feature; // empty for a register that no features file names
    bool isRegister = false;
    int64_t address = 0; // of a register
    QString from;        // null when it was not read before
    QString to;          // null when it is in doubt
    QString under =
        {}; // "GainSelector=Red", where selectors were moved (NetChanges.h); empty: nothing of the kind
};

// Values are told as features files have them (an enumeration's number, six digits of a float); registers as
// hexadecimal bytes in the order of their addresses.
class ObservedChanges
{
public:
    // The events of one camera in their order.
    void take(const KX_CallEvent& event);

    // In the order of the writes. A write of what stood there is no change.
    const std::vector<Change>& changes() const { return m_changes; }
    // Writes that the line failed, of what was not read or written since: the camera may have carried them
    // out.
    const std::vector<Change>& inDoubt() const { return m_inDoubt; }
    // Features whose value was read or written, by name, and registers by address.
    const std::set<QString>& seenFeatures() const { return m_seenFeatures; }
    const std::set<int64_t>& seenRegisters() const { return m_seenRegisters; }
    // SHA-256 in hexadecimal; empty before the camera was opened, or when it has none.
    QString descriptionHash() const;
    // Empty when there is none to read in.
    const QByteArray& description() const { return m_description; }
    // As the camera told it; empty when nobody asked.
    QString firmware() const;
    QString value(const QString& feature) const; // as last read or written; null: it was not

private:
    void settle(const KX_CallEvent& event);
    void takeValue(const KX_CallEvent& event);

    std::map<QString, QString> m_features; // as last read or written
    std::map<int64_t, QString> m_registers;
    std::vector<Change> m_changes;
    std::vector<Change> m_inDoubt;
    std::set<QString> m_seenFeatures;
    std::set<int64_t> m_seenRegisters;
    QByteArray m_description;
};

} // namespace companion
