// Which characters no file's name may have.
#pragma once

namespace tests
{

#if defined(_WIN32)
constexpr char kNotInFileNames[] =
    "\x01\x02\x03\x04\x05\x06\a\b\t\n\v\f\r\x0E\x0F\x10\x11\x12\x13\x14\x15\x16"
    "\x17\x18\x19\x1A\x1B\x1C\x1D\x1E\x1F\"*/:<>?\\|";
#else
constexpr char kNotInFileNames[] = "/";
#endif

} // namespace tests
