#include "LogPattern.h"

#include <algorithm>
#include <limits>

namespace VELAInterface
{

namespace
{

// Of a column: more is a slip in a settings file, that each line would pay for.
constexpr int kWidest = 1000;

QByteArray padded(const QByteArray& text, int width, bool isLeft)
{
    return isLeft ? text.leftJustified(width) : text.rightJustified(width);
}

// The date's letter, as often as it stands in a row: that many digits at least.
QByteArray timePart(const QDateTime& time, char letter, int digits)
{
    const auto number = [digits](int value) { return QByteArray::number(value).rightJustified(digits, '0'); };
    switch (letter) {
    case 'y':
        return number(time.date().year());
    case 'M':
        return number(time.date().month());
    case 'd':
        return number(time.date().day());
    case 'H':
        return number(time.time().hour());
    case 'm':
        return number(time.time().minute());
    case 's':
        return number(time.time().second());
    case 'S':
        return number(time.time().msec());
    default:
        return QByteArray(digits, letter);
    }
}

QByteArray timeText(const QDateTime& time, QByteArray format)
{
    if (format.isEmpty() || format == "ISO8601")
        format = "yyyy-MM-dd HH:mm:ss,SSS";
    else if (format == "ABSOLUTE")
        format = "HH:mm:ss,SSS";
    QByteArray text;
    for (int i = 0, end = 0; i < format.size(); i = end) {
        for (end = i + 1; end < format.size() && format[end] == format[i];)
            ++end;
        text += timePart(time, format[i], end - i);
    }
    return text;
}

// One conversion behind its percent sign.
class Conversion
{
public:
    // `at` stands behind the percent sign, and behind the conversion afterwards.
    Conversion(const QByteArray& pattern, int& at)
    {
        if (at < pattern.size() && pattern[at] == '-') {
            m_isLeft = true;
            ++at;
        }
        m_width = std::min(digits(pattern, at, 0), kWidest);
        if (at < pattern.size() && pattern[at] == '.') {
            ++at;
            m_longest = digits(pattern, at, -1);
        }
        if (at < pattern.size())
            m_letter = pattern[at++];
        if (m_letter == 'd')
            m_option = braces(pattern, at);
    }

    // False for a letter that is none.
    bool append(const LogLine& line, QByteArray& text) const
    {
        if (m_letter == '\0' || QByteArray("dptFLMmcn%").indexOf(m_letter) < 0)
            return false;
        const QByteArray whole = value(line);
        const bool isCut = m_longest >= 0 && whole.size() > m_longest;
        text += isCut ? whole.right(m_longest) : padded(whole, m_width, m_isLeft);
        return true;
    }

private:
    static int digits(const QByteArray& pattern, int& at, int without)
    {
        const int begin = at;
        while (at < pattern.size() && pattern[at] >= '0' && pattern[at] <= '9')
            ++at;
        bool isNumber = false;
        const int number = pattern.mid(begin, at - begin).toInt(&isNumber);
        return at == begin ? without : isNumber ? number : std::numeric_limits<int>::max();
    }

    static QByteArray braces(const QByteArray& pattern, int& at)
    {
        const int end = pattern.indexOf('}', at);
        if (at >= pattern.size() || pattern[at] != '{' || end < 0)
            return {};
        const QByteArray inside = pattern.mid(at + 1, end - at - 1);
        at = end + 1;
        return inside;
    }

    QByteArray value(const LogLine& line) const
    {
        switch (m_letter) {
        case 'd':
            return timeText(line.time, m_option);
        case 'p':
            return line.level;
        case 't':
            return line.thread;
        case 'F':
            return line.file;
        case 'L':
            return QByteArray::number(line.line);
        case 'M':
            return functionName(line.function);
        case 'm':
            return line.text;
        case 'c':
            return "root";
        case 'n':
            return "\n";
        default:
            return "%";
        }
    }

    bool m_isLeft = false;
    int m_width = 0;
    int m_longest = -1;
    char m_letter = '\0';
    QByteArray m_option;
};

} // namespace

// Up to the parameters, behind the last scope, or behind what is returned where there is none.
QByteArray functionName(const QByteArray& signature)
{
    const QByteArray name = signature.split('(').first();
    const int scope = name.lastIndexOf("::");
    return scope >= 0 ? name.mid(scope + 2) : name.mid(name.indexOf(' ') + 1);
}

QByteArray formatted(const LogLine& line, const QByteArray& pattern)
{
    QByteArray text;
    for (int at = 0; at < pattern.size();) {
        const int begin = at;
        if (pattern[at++] != '%') {
            text += pattern[begin];
            continue;
        }
        if (!Conversion(pattern, at).append(line, text))
            text += pattern.mid(begin, at - begin);
    }
    return text;
}

} // namespace VELAInterface
