// The suite's common library, the part that needs no widgets. All functions may be called from any thread.
#pragma once

#include <QString>
#include <QtGlobal>

#if defined(SUITETOOLS_BUILD_LIBRARY)
#  define SUITETOOLS_API Q_DECL_EXPORT
#else
#  define SUITETOOLS_API Q_DECL_IMPORT
#endif

namespace VELAInterface
{

// How 8-bit text of a device is turned into QString. Any other stored value acts as Automatic.
enum _ENCODING_TYPE_
{
    ENCODING_AUTOMATIC = 0, // UTF-8 when the bytes are valid UTF-8, else GB18030
    ENCODING_UTF8 = 1,
    ENCODING_GB18030 = 2,
    ENCODING_LATIN1 = 3
};

// Process-wide; ENCODING_AUTOMATIC at start.
SUITETOOLS_API void SetEncodingType(_ENCODING_TYPE_ type);

// Text of a device field under the process-wide encoding. Ends at the first zero byte, or after `length` bytes when
// that is not negative; -1: up to the zero byte, which must then be there. A null pointer gives an empty text.
SUITETOOLS_API QString GetEncodeQStringFromUnChar(const unsigned char* text, int length);
// The same for a text that the camera library handed out.
SUITETOOLS_API QString char2QStringLocale(const char* text, int length);
// The way back, under the process-wide encoding (Automatic: UTF-8): at most `capacity` bytes are written to
// `buffer`, never a part of a character, and no terminating zero beyond what the caller has put there.
SUITETOOLS_API void CovertEncodeCharFromQString(const QString& text, char* buffer, int capacity);

// A status of the camera library as the suite's error code (same 32 bits, signed), its printable form
// ("[0x80000201]"), and a sentence about it in the suite's language, never empty.
SUITETOOLS_API int SDKCode2VELACode(unsigned int status);
SUITETOOLS_API QString GenerateSDKCode(unsigned int code);
SUITETOOLS_API QString GenerateVELAErrorDesc(int code);

// The version that features files carry and that the import compares, e.g. "1.0.0".
SUITETOOLS_API QString softwareVersion();
// The version of the running program, shown in title bars, e.g. "1.0.0.0".
SUITETOOLS_API QString curExeVersion();

// How many cameras one batch may hold: 32.
SUITETOOLS_API unsigned int toolsSupportNum();

// Folders without a trailing separator; not created here. VELA_PROGRAM_DATA and VELA_USER_DATA override them.
SUITETOOLS_API QString programDataPath(); // shared by all users and programs of the suite
SUITETOOLS_API QString userDataPath();    // of this user

// "CH" or "ENG": VELA_LANGUAGE when it is one of the two, else by the system's language.
SUITETOOLS_API QString language();

// "0x" and hexadecimal digits: base 16; decimal digits only: base 10; other hexadecimal digits without prefix: base
// 16. Anything else, and what does not fit into 64 bits, is 0. 0x8000000000000000 and above wrap to negative.
SUITETOOLS_API qint64 string2Int(const QString& text);

// Evaluates a GenICam SwissKnife expression (GenICam Standard, "SwissKnife"). Numbers only: a name is an error.
// Independent of the locale, never throws, bounded in depth. On failure `ok` is false, the result 0 and
// GetCalculatorErro() tells why.
SUITETOOLS_API double Compute(const char* expression, bool& ok);
// What the last failed Compute of the process had to say; another thread's failure may replace it at any time.
SUITETOOLS_API QString GetCalculatorErro();

// 0x0000AABB, 0xCCDDEEFF -> "AA:BB:CC:DD:EE:FF".
SUITETOOLS_API QString int2StringMacAddress(unsigned int high, unsigned int low);

} // namespace VELAInterface
