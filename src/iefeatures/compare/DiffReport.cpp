#include "iefeatures/compare/DiffReport.h"

#include "iefeatures/compare/RegisterText.h"
#include "iefeatures/console/Text.h"

#include <nlohmann/json.hpp>

namespace companion
{
namespace
{

using Json = nlohmann::ordered_json;
using Side = FeatureDifference::Side;

const char* const kNothing = "-"; // on this side

template <class Value>
QString whereText(const std::optional<Value>& a, const std::optional<Value>& b)
{
    return a && b ? "differs" : a ? "only in A" : "only in B";
}

template <class Value>
const char* whereWord(const std::optional<Value>& a, const std::optional<Value>& b)
{
    return a && b ? "differs" : a ? "onlyInA" : "onlyInB";
}

// Texts in quotes: an empty one is a value, too.
QString valueText(const Side& side)
{
    if (side.type == "StringReg")
        return '"' + printable(side.value) + '"';
    if (side.entryName.isEmpty())
        return printable(side.value);
    return printable(side.entryName) + " (" + printable(side.value) + ')';
}

QString cell(const FeatureDifference& difference, const std::optional<Side>& side)
{
    if (!side)
        return kNothing;
    const bool isTypeTold = difference.a && difference.b && difference.a->type != difference.b->type;
    return valueText(*side) + (isTypeTold ? " [" + printable(side->type) + ']' : QString());
}

// Words that go with the register block's own line have none of theirs.
void addRows(const FeatureDifference& difference, QList<QStringList>& rows)
{
    const auto& [name, a, b, registers] = difference;
    if (!a || !b || a->type != b->type || a->value != b->value)
        rows.append({whereText(a, b), printable(name), cell(difference, a), cell(difference, b)});
    if (!a || !b)
        return;
    for (const RegisterDifference& word : registers)
        rows.append({whereText(word.a, word.b),
                     printable(name + ' ' + hexAddress(word.address) + ' ' + word.variables).trimmed(),
                     printable(word.a.value_or(kNothing)), printable(word.b.value_or(kNothing))});
}

QString countsText(const FeatureComparison& comparison)
{
    int both = 0;
    int onlyInA = 0;
    int onlyInB = 0;
    for (const FeatureDifference& difference : comparison.header + comparison.features)
        ++(difference.a && difference.b ? both : difference.a ? onlyInA : onlyInB);
    QString text = QString("%1 different, %2 only in A, %3 only in B").arg(both).arg(onlyInA).arg(onlyInB);
    QStringList leftOut;
    for (const LeftOut& one : comparison.leftOut)
        leftOut += printable(one.name) + (one.why.isEmpty() ? QString() : " (" + one.why + ')');
    if (!leftOut.isEmpty())
        text += QString("; %1 more left out: ").arg(leftOut.size()) + leftOut.join(", ");
    return text + '\n';
}

Json valueJson(const std::optional<Side>& side)
{
    return side ? Json(side->value.toStdString()) : Json();
}

Json wordJson(const std::optional<QString>& word)
{
    return word ? Json(word->toStdString()) : Json();
}

Json registersJson(const QList<RegisterDifference>& registers)
{
    Json list = Json::array();
    for (const RegisterDifference& word : registers)
        list.push_back({{"address", word.address},
                        {"variables", word.variables.toStdString()},
                        {"difference", whereWord(word.a, word.b)},
                        {"a", wordJson(word.a)},
                        {"b", wordJson(word.b)}});
    return list;
}

Json featureJson(const FeatureDifference& difference)
{
    const auto& [name, a, b, registers] = difference;
    Json json = {{"name", name.toStdString()},
                 {"difference", whereWord(a, b)},
                 {"type", (a ? a->type : b->type).toStdString()},
                 {"a", valueJson(a)},
                 {"b", valueJson(b)}};
    if (a && b && a->type != b->type)
        json["typeB"] = b->type.toStdString();
    if (a && !a->entryName.isEmpty())
        json["entryA"] = a->entryName.toStdString();
    if (b && !b->entryName.isEmpty())
        json["entryB"] = b->entryName.toStdString();
    if (difference.isRegisterBlock())
        json["registers"] = registersJson(registers);
    return json;
}

} // namespace

QString diffText(const FeatureComparison& comparison, const QString& titleA, const QString& titleB)
{
    QString text = "A: " + titleA + "\nB: " + titleB + '\n';
    QList<QStringList> rows = {{"WHERE", "FEATURE", "A", "B"}};
    for (const FeatureDifference& difference : comparison.header + comparison.features)
        addRows(difference, rows);
    if (rows.size() > 1)
        text += alignedRows({Align::Left, Align::Left, Align::Left, Align::Left}, rows);
    return text + countsText(comparison);
}

std::string diffJson(const FeatureComparison& comparison, const QString& titleA, const QString& titleB)
{
    Json header = Json::array();
    for (const FeatureDifference& field : comparison.header)
        header.push_back({{"name", field.name.toStdString()},
                          {"difference", whereWord(field.a, field.b)},
                          {"a", valueJson(field.a)},
                          {"b", valueJson(field.b)}});
    Json features = Json::array();
    for (const FeatureDifference& difference : comparison.features)
        features.push_back(featureJson(difference));
    Json leftOut = Json::array();
    for (const LeftOut& one : comparison.leftOut)
        leftOut.push_back(one.name.toStdString());
    const Json json = {{"a", titleA.toStdString()},     {"b", titleB.toStdString()},
                       {"equal", comparison.isEqual()}, {"header", header},
                       {"features", features},          {"leftOut", leftOut}};
    return json.dump(2) + "\n";
}

} // namespace companion
