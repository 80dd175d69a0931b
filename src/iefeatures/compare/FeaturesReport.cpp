#include "iefeatures/compare/FeaturesReport.h"

#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/RegisterText.h"
#include "iefeatures/console/Text.h"

namespace companion
{
namespace
{

constexpr int kWordsOfLine = 4;

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

void addRows(const ie::RegisterValue& value, QList<QStringList>& rows)
{
    const QString variables = printable(value.variables);
    if (value.converted) {
        const QString converted = " = " + printable(value.content) + "  from " + printable(value.from);
        rows.append({"    " + hexAddress(value.address), variables, hexWord(value.to) + converted});
        return;
    }
    const QStringList words = hexWords(value.content);
    for (int i = 0; i < words.size(); i += kWordsOfLine)
        rows.append({"    " + hexAddress(value.address + 4 * qint64(i)), i == 0 ? variables : QString(),
                     words.mid(i, kWordsOfLine).join(' ')});
}

QString blockText(const ie::ComplexFeature& block)
{
    QString text = QString("  %1  %2 bytes").arg(printable(block.name)).arg(block.length);
    if (!block.reg.isEmpty())
        text += " of " + printable(block.reg);
    QList<QStringList> rows;
    for (const ie::RegisterValue& value : block.values)
        addRows(value, rows);
    return text + '\n' + alignedRows({Align::Left, Align::Left, Align::Left}, rows);
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

QString featuresText(const ie::FeaturesContent& content)
{
    QList<QStringList> plain;
    QStringList blocks;
    for (const auto& entry : content.entries) {
        if (entry.isComplex)
            blocks += blockText(entry.complex);
        else
            plain.append(plainRow(entry.plain));
    }
    return headerText(content.header) + QString("\nFeatures: %1\n").arg(plain.size()) +
           alignedRows({Align::Left, Align::Left, Align::Left}, plain) +
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
