#include "SuiteTools/SuiteTools.h"

#include <limits>

namespace VELAInterface
{

namespace
{

// -1: no digit of any base up to 16. ASCII only, unlike QChar::digitValue.
int digitOf(QChar character)
{
    const ushort c = character.unicode();
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

bool isDecimal(const QString& text)
{
    for (const QChar c : text)
        if (digitOf(c) < 0 || digitOf(c) > 9)
            return false;
    return true;
}

} // namespace

qint64 string2Int(const QString& text)
{
    const bool hasPrefix = text.startsWith(QLatin1String("0x"));
    const QString digits = hasPrefix ? text.mid(2) : text;
    const quint64 base = !hasPrefix && isDecimal(digits) ? 10 : 16;
    quint64 value = 0;
    for (const QChar c : digits) {
        const int digit = digitOf(c);
        if (digit < 0 || value > (std::numeric_limits<quint64>::max() - static_cast<quint64>(digit)) / base)
            return 0;
        value = value * base + static_cast<quint64>(digit);
    }
    return static_cast<qint64>(value);
}

QString int2StringMacAddress(unsigned int high, unsigned int low)
{
    return QString::asprintf("%02X:%02X:%02X:%02X:%02X:%02X", high >> 8 & 0xFFu, high & 0xFFu, low >> 24,
                             low >> 16 & 0xFFu, low >> 8 & 0xFFu, low & 0xFFu);
}

} // namespace VELAInterface
