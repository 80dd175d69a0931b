// As long as it lives, cameras that are opened are asked for each register when it is needed: a fault that
// comes after so many requests comes in the middle of a job then, which reading ahead would have finished.
#pragma once

#include <QtGlobal>

namespace tests
{

class RegisterByRegister
{
public:
    RegisterByRegister() { qputenv("KX_CAMERA_READ_AHEAD", "0"); }
    ~RegisterByRegister() { qunsetenv("KX_CAMERA_READ_AHEAD"); }
    RegisterByRegister(const RegisterByRegister&) = delete;
    RegisterByRegister& operator=(const RegisterByRegister&) = delete;
};

} // namespace tests
