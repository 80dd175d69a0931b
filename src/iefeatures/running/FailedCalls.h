// Which features and registers of a camera stand with a call that failed and was not made good later.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QString>

#include <map>
#include <string>
#include <vector>

namespace companion
{

// Whether a call that is over tells that the line failed. One that was refused never reached the line, and a
// description that is too long for its buffer is asked for again.
bool tellsLineFailure(const KX_CallEvent& event);

struct FailedCall
{
    QString feature; // empty for a register
    bool isRegister = false;
    int64_t address = 0; // of a register
    KX_Status status = KX_OK;
};

// A job reads a value before it writes it, and tries again what failed. So a write that failed counts until a
// write of the same thing succeeds, or a read shows that nothing is left to be written. Reads and questions
// count when the line failed them, since a job goes on without their answer.
class FailedCalls
{
public:
    // The events of one camera that are over, in their order.
    void take(const KX_CallEvent& event);

    // Features, questions about their access, registers; by name or address.
    std::vector<FailedCall> failures() const;

private:
    std::map<std::string, KX_Status> m_features;
    std::map<std::string, KX_Status> m_questions; // access modes
    std::map<int64_t, KX_Status> m_registers;
    bool m_wasFailedWrite = false; // the last event
    int64_t m_lastAddress = 0;
};

} // namespace companion
