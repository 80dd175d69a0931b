#include "iefeatures/console/RegisterText.h"

#include "iefeatures/console/Text.h"

namespace companion
{
namespace
{

constexpr int kDigits = 8;

QString hexadecimal(quint64 number)
{
    return "0x" + QString::number(number, 16).toUpper().rightJustified(kDigits, '0');
}

} // namespace

QString hexWord(const QString& word)
{
    bool isNumber = false;
    const uint number = word.toUInt(&isNumber, word.startsWith("0x") ? 16 : 10);
    return isNumber ? hexadecimal(number) : printable(word);
}

QStringList hexWords(const QString& content)
{
    QStringList words;
    for (const QString& word : content.split(','))
        words += hexWord(word);
    return words;
}

QString hexAddress(qint64 address)
{
    return hexadecimal(static_cast<quint64>(address));
}

} // namespace companion
