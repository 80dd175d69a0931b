// A name that leads to a device of the system: what opens it for a file must not wait for its end.
#pragma once

namespace tests
{

#if defined(_WIN32)
constexpr char kDevice[] = "CON";
#else
constexpr char kDevice[] = "/dev/zero";
#endif

} // namespace tests
