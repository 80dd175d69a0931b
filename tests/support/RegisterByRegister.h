// How cameras that are opened meanwhile are asked for registers.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace tests
{

// A setting of the process, as long as it lives.
class ReadingAhead
{
public:
    explicit ReadingAhead(bool isOn)
    {
        if (const char* before = std::getenv(kName))
            m_before = before;
        setenv(kName, isOn ? "1" : "0", 1);
    }
    ~ReadingAhead()
    {
        if (m_before)
            setenv(kName, m_before->c_str(), 1);
        else
            unsetenv(kName);
    }
    ReadingAhead(const ReadingAhead&) = delete;
    ReadingAhead& operator=(const ReadingAhead&) = delete;

private:
    static constexpr const char* kName = "KX_CAMERA_READ_AHEAD";
    std::optional<std::string> m_before;
};

// Each when it is needed: a fault that comes after so many requests comes in the middle of a job then, which
// reading ahead would have finished.
class RegisterByRegister
{
    ReadingAhead m_off{false};
};

} // namespace tests
