#include "LogSettings.h"

#include <QHash>
#include <QList>

#include <algorithm>
#include <array>
#include <set>

namespace VELAInterface
{

namespace
{

constexpr int mostBackups = 13;

using Properties = QHash<QByteArray, QByteArray>;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\f';
}

char unescaped(char c)
{
    switch (c) {
    case 't':
        return '\t';
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    default:
        return c;
    }
}

// Lines that end in a backslash go on in the next one, behind its leading blanks.
QList<QByteArray> logicalLines(const QByteArray& text)
{
    QList<QByteArray> lines;
    bool goesOn = false;
    for (QByteArray line : text.split('\n')) {
        if (line.endsWith('\r'))
            line.chop(1);
        const auto begin = std::find_if_not(line.cbegin(), line.cend(), isBlank);
        line.remove(0, static_cast<int>(begin - line.cbegin()));
        if (!goesOn && (line.isEmpty() || line.startsWith('#') || line.startsWith('!')))
            continue;
        const bool more = line.endsWith('\\');
        if (more)
            line.chop(1);
        if (goesOn)
            lines.last() += line;
        else
            lines.append(line);
        goesOn = more;
    }
    return lines;
}

QByteArray withoutEscapes(const QByteArray& text)
{
    QByteArray plain;
    for (int i = 0; i < text.size(); ++i)
        plain += text[i] == '\\' && i + 1 < text.size() ? unescaped(text[++i]) : text[i];
    return plain;
}

Properties propertiesOf(const QByteArray& text)
{
    Properties properties;
    for (const QByteArray& line : logicalLines(text)) {
        const auto ends = [](char c) { return c == '=' || c == ':' || isBlank(c); };
        const auto keyEnd = std::find_if(line.cbegin(), line.cend(), ends);
        auto value = std::find_if_not(keyEnd, line.cend(), isBlank);
        if (value != line.cend() && (*value == '=' || *value == ':'))
            value = std::find_if_not(value + 1, line.cend(), isBlank);
        // Blanks at the end are the value's.
        properties.insert(line.left(static_cast<int>(keyEnd - line.cbegin())),
                          withoutEscapes(line.mid(static_cast<int>(value - line.cbegin()))));
    }
    return properties;
}

// With ${NAME} replaced; what neither the environment nor the file knows stands for nothing.
QByteArray valueOf(const Properties& properties, const QByteArray& key)
{
    const QByteArray text = properties.value(key);
    QByteArray value;
    int from = 0;
    for (int begin = 0; (begin = text.indexOf("${", from)) >= 0;) {
        const int end = text.indexOf('}', begin);
        if (end < 0)
            break;
        const QByteArray name = text.mid(begin + 2, end - begin - 2);
        value += text.mid(from, begin - from);
        value += qEnvironmentVariableIsSet(name.constData()) ? qEnvironmentVariable(name.constData()).toUtf8()
                                                             : properties.value(name);
        from = end + 1;
    }
    return value + text.mid(from);
}

// A word that is no level counts as DEBUG.
LogLevel levelOf(const QByteArray& word)
{
    static const std::array<const char*, 8> words{"ALL",  "TRACE", "DEBUG", "INFO",
                                                  "WARN", "ERROR", "FATAL", "OFF"};
    const auto found = std::find(words.begin(), words.end(), word.trimmed().toUpper());
    return found == words.end() ? LogLevel::Debug : static_cast<LogLevel>(found - words.begin());
}

// Digits up to the first other character, times the unit that the text ends with.
qint64 bytesOf(const QByteArray& text)
{
    const QByteArray word = text.trimmed().toUpper();
    const bool isNegative = word.startsWith('-');
    qint64 number = 0;
    for (int i = isNegative ? 1 : 0; i < word.size() && word[i] >= '0' && word[i] <= '9'; ++i)
        number = std::min<qint64>(number * 10 + (word[i] - '0'), Q_INT64_C(1) << 32);
    const qint64 unit = word.endsWith("GB")   ? 1 << 30
                        : word.endsWith("MB") ? 1 << 20
                        : word.endsWith("KB") ? 1 << 10
                                              : 1;
    return isNegative ? -1 : number * unit;
}

LogAppender appenderOf(const Properties& properties, const QByteArray& key)
{
    LogAppender appender;
    appender.file = QString::fromUtf8(valueOf(properties, key + ".File"));
    appender.append = valueOf(properties, key + ".Append").trimmed().toLower() != "false";
    // A pattern's escapes are undone twice: as a value, and as a pattern.
    appender.pattern = withoutEscapes(valueOf(properties, key + ".layout.ConversionPattern"));
    if (properties.contains(key + ".Threshold"))
        appender.threshold = levelOf(valueOf(properties, key + ".Threshold"));
    if (!properties.value(key).endsWith("RollingFileAppender"))
        return appender;
    const QByteArray size = valueOf(properties, key + ".MaxFileSize");
    if (!size.isEmpty())
        appender.maxSize = bytesOf(size);
    if (properties.contains(key + ".MaxBackupIndex"))
        appender.backups =
            std::clamp(valueOf(properties, key + ".MaxBackupIndex").trimmed().toInt(), 1, mostBackups);
    return appender;
}

} // namespace

LogSettings readLogSettings(const QByteArray& text)
{
    const Properties properties = propertiesOf(text);
    QList<QByteArray> words = valueOf(properties, "log4j.rootLogger").split(',');
    LogSettings settings;
    settings.level = levelOf(words.takeFirst());
    if (properties.contains("log4j.threshold"))
        settings.level = std::max(settings.level, levelOf(valueOf(properties, "log4j.threshold")));
    std::set<QByteArray> keys;
    for (const QByteArray& name : words) {
        const QByteArray key = "log4j.appender." + name.trimmed();
        if (!keys.insert(key).second)
            continue;
        const LogAppender appender = appenderOf(properties, key);
        if (properties.value(key).trimmed().endsWith("FileAppender") && !appender.file.isEmpty())
            settings.appenders.push_back(appender);
    }
    return settings;
}

} // namespace VELAInterface
