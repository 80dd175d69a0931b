// Text for people's eyes.
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace companion
{

// Control and format characters, and what ends lines.
bool actsOnTerminal(uint character);
// Text from a camera without what a terminal would act on: control and format characters become U+FFFD.
QString printable(const QString& text);
// The same, but different texts stay different: such characters become "\u001b" or "\U000e0001", and
// backslashes two.
QString escapedText(const QString& text);
// As printable(), of each line of a text; an empty text has none.
QStringList printableLines(const QString& text);

// The same, with the text's empty lines.
QString printableText(const QString& text);

// Terminal columns that a printable text takes (Unicode Standard Annex 11): wide characters two, combining
// marks none, every other one.
int displayWidth(const QString& text);
// Blanks added, or characters cut off at the end, up to exactly that many columns.
QString fitted(const QString& text, int columns);
// At most that many columns: what is longer is cut in the middle, where "..." says so. Both ends of a value
// tell more of it than its middle.
QString shortened(const QString& text, int columns);
// Lines of at most that many columns, broken at blanks; a word that is longer has a line of its own. 0: one
// line.
QStringList wrapped(const QString& text, int columns);

enum class Align
{
    Left,
    Right
};

// Rows of printable cells in aligned columns, two blanks between them, each line ended by a line feed. A
// cell of more than 200 columns stands out of its column: no other row is made as long. Every
// row has as many cells as there are columns; nothing follows the last cell of a row.
QString alignedRows(const std::vector<Align>& columns, const QList<QStringList>& rows);

} // namespace companion
