// Registers of features files for people's eyes.
#pragma once

#include <QString>
#include <QStringList>

namespace companion
{

// "0x0000000A" of a word as a features file has it; what is no number of 32 bits stays as it is, printable.
QString hexWord(const QString& word);
// Of contents such as "1,2,3".
QStringList hexWords(const QString& content);
// "0x00013000"; longer ones keep all their digits.
QString hexAddress(qint64 address);

} // namespace companion
