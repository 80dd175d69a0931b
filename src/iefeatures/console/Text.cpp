#include "iefeatures/console/Text.h"

#include <QVector>

#include <algorithm>

namespace companion
{
namespace
{

struct Range
{
    uint first;
    uint last;
};

// Unicode Standard Annex 11, classes W and F, in rough blocks.
bool isWide(uint character)
{
    static const Range wide[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},  {0x3041, 0xA4CF}, {0xAC00, 0xD7A3},
                                 {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},  {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6},
                                 {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}};
    return std::any_of(std::begin(wide), std::end(wide), [character](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

int characterWidth(uint character)
{
    const QChar::Category category = QChar::category(character);
    if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing)
        return 0;
    return isWide(character) ? 2 : 1;
}

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

QString aligned(const QString& cell, int columns, Align align)
{
    const QString blanks(std::max(0, columns - displayWidth(cell)), ' ');
    return align == Align::Right ? blanks + cell : cell + blanks;
}

} // namespace

QString printable(const QString& text)
{
    QVector<uint> characters = text.toUcs4();
    std::replace_if(characters.begin(), characters.end(), actsOnTerminal, 0xFFFDu);
    return QString::fromUcs4(characters.constData(), characters.size());
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

QString alignedRows(const std::vector<Align>& columns, const QList<QStringList>& rows)
{
    std::vector<int> widths(columns.size(), 0);
    for (const QStringList& row : rows)
        for (size_t i = 0; i < columns.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row.at(int(i))));
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
