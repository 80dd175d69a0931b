// The suite's common library, the part that needs no widgets. All functions may be called from any thread;
// none throws, none blocks. Loading the library registers StructDeviceInfo (StructDeviceInfo.h) with the
// meta-type system.
#pragma once

#include <QString>
#include <QtGlobal>

#if defined(SUITETOOLS_BUILD_LIBRARY) || !defined(Q_OS_WIN)
#define SUITETOOLS_API Q_DECL_EXPORT
#else
#define SUITETOOLS_API // imported without a word; and a test may bring a library of its own
#endif

namespace VELAInterface
{

// How 8-bit text of a device is turned into QString. Any other stored value acts as Automatic.
enum _ENCODING_TYPE_ : int
{
    ENCODING_AUTOMATIC = 0, // UTF-8 when the bytes are valid UTF-8, else GB18030
    ENCODING_UTF8 = 1,
    ENCODING_GB18030 = 2,
    ENCODING_LATIN1 = 3
};

// Process-wide; ENCODING_AUTOMATIC at start.
SUITETOOLS_API void SetEncodingType(_ENCODING_TYPE_ type);

// Text of a device field under the process-wide encoding. Ends at the first zero byte, or after `length`
// bytes when that is not negative; -1: up to the zero byte, which must then be there. A null pointer gives an
// empty text. A character that `length` cuts is left out; bytes that the encoding does not know become
// U+FFFD.
SUITETOOLS_API QString GetEncodeQStringFromUnChar(const unsigned char* text, int length);
// The same for a text that the camera library handed out.
SUITETOOLS_API QString char2QStringLocale(const char* text, int length);
// The way back, under the process-wide encoding (Automatic: UTF-8): at most `capacity` bytes are written to
// `buffer`, never a part of a character (one that would not fit ends the text), and no terminating zero
// beyond what the caller has put there. Characters that the encoding lacks become "?". Nothing happens with a
// null `buffer`.
SUITETOOLS_API void CovertEncodeCharFromQString(const QString& text, char* buffer, int capacity);

// A status of the camera library as the suite's error code (same 32 bits, signed), its printable form
// ("[0x80000201]"), and a sentence about it in the suite's language, never empty. Callers put the sentence
// directly behind the printable form: an English one begins with a blank.
SUITETOOLS_API int SDKCode2VELACode(unsigned int status);
SUITETOOLS_API QString GenerateSDKCode(unsigned int code);
SUITETOOLS_API QString GenerateVELAErrorDesc(int code);

// The version that features files carry and that the import compares, e.g. "1.0.0".
SUITETOOLS_API QString softwareVersion();
// The version of the running program, shown in title bars, e.g. "1.0.0.0".
SUITETOOLS_API QString curExeVersion();

// How many cameras one batch may hold: 32.
SUITETOOLS_API unsigned int toolsSupportNum();

// Folders without a trailing separator; not created here. The environment's VELA_PROGRAM_DATA and
// VELA_USER_DATA, when not empty, override them.
//
// Shared by all programs of the suite. Windows: "VELA" in the data folder of all users; elsewhere no such
// folder may be written, so "VELA" in the user's data folder (XDG_DATA_HOME).
SUITETOOLS_API QString programDataPath();
// Of this user: "VELA" in the documents folder.
SUITETOOLS_API QString userDataPath();

// "CH" or "ENG": the environment's VELA_LANGUAGE when it is one of the two, else "CH" when the system speaks
// Chinese to its user and "ENG" otherwise.
SUITETOOLS_API QString language();

// "0x" and hexadecimal digits: base 16; decimal digits only: base 10; other hexadecimal digits without
// prefix: base 16. Anything else (blanks, signs and "0X" too), and what needs more than 64 bits, is 0. Values
// from 2^63 on are the same bits as a negative number.
SUITETOOLS_API qint64 string2Int(const QString& text);

// Evaluates a formula of the GenICam SwissKnife grammar. Numbers only: a name is an error. Independent of the
// locale. Takes time and memory linear in the text, whose parentheses may be nested 10,000 deep, and next to
// nothing of the thread's stack. On failure `ok` is false, the result 0 and GetCalculatorErro() tells why; a
// value that is not finite is a failure. A null pointer counts as an empty text, which is an error.
//
// Operators, tightest first; equal ones are taken from the left, ** and ?: from the right:
//     + - ~ (one operand)   **   * / %   + -   << >>   < <= > >=   = <>   &   ^   |   &&   ||   ?:
// So "-2**2" is 4: variables are put in as text, and a negative one must keep its sign. && || ?: evaluate
// only what they need, but all of the text must be a formula. Anything but 0 is true.
//
// Numbers are double (7/2 is 3.5): 12, .5, 5., 1.2e-3, and 0xFF, whose digits are a 64-bit pattern (with all
// 64 bits set it is -1). % << >> & | ^ ~ cut their operands to whole numbers of 64 bits; operands outside
// [-2^63, 2^64), shifts by less than 0 or more than 63 and division by 0 are errors; % has the sign of its
// left operand.
//
// Functions: ABS SGN NEG ATAN COS SIN TAN ASIN ACOS EXP LN LG SQRT TRUNC FLOOR CEIL ROUND(x) ROUND(x,digits),
// where halves go away from 0. Constants: E PI, also written E() PI().
SUITETOOLS_API double Compute(const char* expression, bool& ok);
// What the last failed Compute of the process had to say; another thread's failure may replace it at any
// time. A success does not clear it. Empty before the first failure.
SUITETOOLS_API QString GetCalculatorErro();

// 0x0000AABB, 0xCCDDEEFF -> "AA:BB:CC:DD:EE:FF". The upper half of `high` does not count.
SUITETOOLS_API QString int2StringMacAddress(unsigned int high, unsigned int low);

} // namespace VELAInterface
