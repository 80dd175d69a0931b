#include "iefeatures/compare/FeaturesReport.h"

#include "iefeatures/compare/RegisterText.h"
#include "iefeatures/console/Text.h"

#include <nlohmann/json.hpp>

namespace companion
{
namespace
{

using Json = nlohmann::ordered_json;

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
    Json json = {{"address", value.address}, {"variables", value.variables.toStdString()}};
    if (value.converted) {
        json["word"] = hexWord(value.to).toStdString();
        json["value"] = value.content.toStdString();
        json["from"] = value.from.toStdString();
        return json;
    }
    json["words"] = Json::array();
    for (const QString& word : hexWords(value.content))
        json["words"].push_back(word.toStdString());
    return json;
}

Json entryJson(const ie::FeaturesContent::Entry& entry)
{
    if (!entry.isComplex)
        return {{"name", entry.plain.name.toStdString()},
                {"type", entry.plain.type.toStdString()},
                {"value", entry.plain.value.toStdString()}};
    Json json = {{"name", entry.complex.name.toStdString()},
                 {"type", "Register"},
                 {"length", entry.complex.length},
                 {"register", entry.complex.reg.toStdString()},
                 {"values", Json::array()}};
    for (const ie::RegisterValue& value : entry.complex.values)
        json["values"].push_back(registerJson(value));
    return json;
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

std::string featuresJson(const ie::FeaturesContent& content)
{
    const ie::FeaturesHeader& header = content.header;
    Json json = {{"version", header.version.toStdString()},
                 {"model", header.model.toStdString()},
                 {"firmware", header.firmware.toStdString()},
                 {"boardType", header.hasBoardType ? Json(header.boardType.toStdString()) : Json()},
                 {"features", Json::array()}};
    for (const auto& entry : content.entries)
        json["features"].push_back(entryJson(entry));
    return json.dump(2) + "\n";
}

} // namespace companion
