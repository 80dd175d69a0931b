#include "iefeatures/console/Text.h"

#include <QVector>

#include <utf8proc.h>

#include <algorithm>

namespace companion
{
namespace
{

constexpr int kWidestColumn = 200;

// As the library sees single characters: what stands in one cell only together (flags, families joined by
// U+200D) is counted by its parts, as most terminals draw it.
int characterWidth(uint character)
{
    return utf8proc_charwidth(static_cast<utf8proc_int32_t>(character));
}

QString aligned(const QString& cell, int columns, Align align)
{
    const QString blanks(std::max(0, columns - displayWidth(cell)), ' ');
    return align == Align::Right ? blanks + cell : cell + blanks;
}

} // namespace

bool actsOnTerminal(uint character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

QString printable(const QString& text)
{
    QVector<uint> characters = text.toUcs4();
    std::replace_if(characters.begin(), characters.end(), actsOnTerminal, 0xFFFDu);
    return QString::fromUcs4(characters.constData(), characters.size());
}

QString escapedText(const QString& text)
{
    QString escaped;
    for (const uint character : text.toUcs4()) {
        const bool isShort = character <= 0xFFFF;
        if (actsOnTerminal(character))
            escaped += QString(isShort ? "\\u%1" : "\\U%1").arg(character, isShort ? 4 : 8, 16, QChar('0'));
        else
            escaped += character == '\\' ? QString("\\\\") : QString::fromUcs4(&character, 1);
    }
    return escaped;
}

QString printableText(const QString& text)
{
    QStringList lines = text.split('\n');
    for (QString& line : lines)
        line = printable(line);
    return lines.join('\n');
}

QStringList printableLines(const QString& text)
{
    QStringList lines = text.split('\n', Qt::SkipEmptyParts);
    for (QString& line : lines)
        line = printable(line);
    return lines;
}

int displayWidth(const QString& text)
{
    int width = 0;
    for (const uint character : text.toUcs4())
        width += characterWidth(character);
    return width;
}

QString fitted(const QString& text, int columns)
{
    QString kept;
    int width = 0;
    for (const uint character : text.toUcs4()) {
        if (width + characterWidth(character) > columns)
            break;
        width += characterWidth(character);
        kept += QString::fromUcs4(&character, 1);
    }
    return kept + QString(columns - width, ' ');
}

QString shortened(const QString& text, int columns)
{
    if (displayWidth(text) <= columns)
        return text;
    const QString gap = columns < 5 ? "" : "...";
    const int room = std::max(0, columns - int(gap.size()));
    const QString head = fitted(text, room - room / 2).trimmed();
    QVector<uint> tail;
    int width = 0;
    const QVector<uint> characters = text.toUcs4();
    for (auto it = characters.crbegin(); it != characters.crend(); ++it) {
        width += characterWidth(*it);
        if (width > room / 2)
            break;
        tail.prepend(*it);
    }
    return head + gap + QString::fromUcs4(tail.constData(), tail.size());
}

QStringList wrapped(const QString& text, int columns)
{
    if (columns <= 0)
        return {text};
    QStringList lines;
    for (const QString& word : text.split(' ')) {
        const bool fits = !lines.isEmpty() && displayWidth(lines.last()) + 1 + displayWidth(word) <= columns;
        if (fits)
            lines.last() += ' ' + word;
        else
            lines += word;
    }
    return lines;
}

QString alignedRows(const std::vector<Align>& columns, const QList<QStringList>& rows)
{
    std::vector<int> widths(columns.size(), 0);
    for (const QStringList& row : rows)
        for (size_t i = 0; i < columns.size(); ++i)
            if (const int width = displayWidth(row.at(int(i))); width <= kWidestColumn)
                widths[i] = std::max(widths[i], width);
    QString text;
    for (const QStringList& row : rows) {
        QStringList cells;
        for (size_t i = 0; i < columns.size(); ++i) {
            const bool isLast = i + 1 == columns.size() && columns[i] == Align::Left;
            cells += isLast ? row.at(int(i)) : aligned(row.at(int(i)), widths[i], columns[i]);
        }
        text += cells.join("  ") + '\n';
    }
    return text;
}

} // namespace companion
