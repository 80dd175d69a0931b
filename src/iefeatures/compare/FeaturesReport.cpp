#include "iefeatures/compare/FeaturesReport.h"

#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/RegisterText.h"
#include "iefeatures/console/Text.h"

#include <algorithm>

namespace companion
{
namespace
{

constexpr int kWordsOfLine = 4;
constexpr int kNarrowest = 12; // column

QString headerText(const ie::FeaturesHeader& header)
{
    QList<QStringList> rows = {{"Version", printable(header.version)},
                               {"Model", printable(header.model)},
                               {"Firmware", printable(header.firmware)}};
    if (header.hasBoardType)
        rows += {"Board type", printable(header.boardType)};
    return alignedRows({Align::Left, Align::Left}, rows);
}

QStringList plainRow(const ie::PlainFeature& feature)
{
    const QString value = printable(feature.value);
    return {"  " + printable(feature.name), printable(feature.type),
            feature.type == "StringReg" ? '"' + value + '"' : value};
}

void addRows(const ie::RegisterValue& value, int wordsOfLine, QList<QStringList>& rows)
{
    const QString variables = printable(value.variables);
    if (value.converted) {
        const QString converted = " = " + printable(value.content) + "  from " + printable(value.from);
        rows.append({"    " + hexAddress(value.address), variables, hexWord(value.to) + converted});
        return;
    }
    const QStringList words = hexWords(value.content);
    for (int i = 0; i < words.size(); i += wordsOfLine)
        rows.append({"    " + hexAddress(value.address + 4 * qint64(i)), i == 0 ? variables : QString(),
                     words.mid(i, wordsOfLine).join(' ')});
}

// As many as fit behind the address and the variables.
int wordsOfLine(const ie::ComplexFeature& block, int columns)
{
    constexpr int widthOfAddress = 4 + 10 + 2;
    constexpr int widthOfWord = 10 + 1;
    int variables = 0;
    for (const ie::RegisterValue& value : block.values)
        variables = std::max(variables, displayWidth(printable(value.variables)) + 2);
    const int room = columns - widthOfAddress - variables;
    return columns > 0 ? qBound(1, (room + 1) / widthOfWord, kWordsOfLine) : kWordsOfLine;
}

// Each column is cut in the middle so far that those behind it have room; the first ones need little.
QString rowsText(const std::vector<Align>& aligns, QList<QStringList> rows, int columns)
{
    constexpr int gap = 2;
    int left = columns;
    for (int i = 0; columns > 0 && i < int(aligns.size()); ++i) {
        const int later = int(aligns.size()) - 1 - i;
        const int room = std::max(kNarrowest, left - later * (kNarrowest + gap));
        int width = 0;
        for (QStringList& row : rows) {
            row[i] = shortened(row[i], room);
            width = std::max(width, displayWidth(row[i]));
        }
        left -= width + gap;
    }
    return alignedRows(aligns, rows);
}

QString blockText(const ie::ComplexFeature& block, int columns)
{
    QString title = QString("%1  %2 bytes").arg(printable(block.name)).arg(block.length);
    if (!block.reg.isEmpty())
        title += " of " + printable(block.reg);
    const QString indent(4, ' ');
    const int room = columns > 0 ? std::max(kNarrowest, columns - indent.size()) : 0;
    const int words = wordsOfLine(block, columns);
    QList<QStringList> rows;
    for (const ie::RegisterValue& value : block.values)
        addRows(value, words, rows);
    return "  " + wrapped(title, room).join('\n' + indent) + '\n' +
           rowsText({Align::Left, Align::Left, Align::Left}, rows, columns);
}

Json registerJson(const ie::RegisterValue& value)
{
    Json object = {{"address", value.address}, {"variables", json(value.variables)}};
    if (value.converted) {
        object["word"] = json(hexWord(value.to));
        object["value"] = json(value.content);
        object["from"] = json(value.from);
        return object;
    }
    object["words"] = json(hexWords(value.content));
    return object;
}

Json entryJson(const ie::FeaturesContent::Entry& entry)
{
    if (!entry.isComplex)
        return {{"name", json(entry.plain.name)},
                {"type", json(entry.plain.type)},
                {"value", json(entry.plain.value)}};
    Json object = {{"name", json(entry.complex.name)},
                   {"type", "Register"},
                   {"length", entry.complex.length},
                   {"register", json(entry.complex.reg)},
                   {"values", Json::array()}};
    for (const ie::RegisterValue& value : entry.complex.values)
        object["values"].push_back(registerJson(value));
    return object;
}

} // namespace

QString featuresText(const ie::FeaturesContent& content, int columns)
{
    QList<QStringList> plain;
    QStringList blocks;
    for (const auto& entry : content.entries) {
        if (entry.isComplex)
            blocks += blockText(entry.complex, columns);
        else
            plain.append(plainRow(entry.plain));
    }
    return headerText(content.header) + QString("\nFeatures: %1\n").arg(plain.size()) +
           rowsText({Align::Left, Align::Left, Align::Left}, plain, columns) +
           QString("\nRegister blocks: %1\n").arg(blocks.size()) + blocks.join(QString());
}

Json featuresJson(const ie::FeaturesContent& content)
{
    const ie::FeaturesHeader& header = content.header;
    Json object = {{"version", json(header.version)},
                   {"model", json(header.model)},
                   {"firmware", json(header.firmware)},
                   {"board_type", header.hasBoardType ? json(header.boardType) : Json()},
                   {"features", Json::array()}};
    for (const auto& entry : content.entries)
        object["features"].push_back(entryJson(entry));
    return object;
}

} // namespace companion
