// How a line of the log is put together.
#pragma once

#include <QByteArray>
#include <QDateTime>

namespace VELAInterface
{

// What is told of one message. Texts in UTF-8.
struct LogLine
{
    QDateTime time;
    QByteArray level;  // DEBUG, INFO, WARN, ERROR, FATAL
    QByteArray thread; // the thread's id as the system counts, 0x and hexadecimal
    QByteArray file;   // as the message has it; empty without one
    int line = 0;
    QByteArray function; // its whole signature
    QByteArray text;
};

// The line by a log4j conversion pattern. %d{yyyy-MM-dd HH:mm:ss.SSS} time (without braces or with ISO8601:
// date and time with a comma before the milliseconds; ABSOLUTE: the time alone), %p level, %t thread, %F
// file, %L line number, %M the function's bare name, %m text, %c the logger's name (root), %n line feed on
// every system, %% a percent sign. %5p and %-5p pad with blanks at the left or right, to 1000 at most, %.2p
// keeps the last two characters (and what is cut is not padded). Anything else behind a percent sign stands
// as it is.
QByteArray formatted(const LogLine& line, const QByteArray& pattern);

// The bare name out of a function's signature.
QByteArray functionName(const QByteArray& signature);

} // namespace VELAInterface
