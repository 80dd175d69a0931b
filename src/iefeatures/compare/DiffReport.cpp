#include "iefeatures/compare/DiffReport.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/RegisterText.h"
#include "iefeatures/console/Text.h"

namespace companion
{
namespace
{

using Side = FeatureDifference::Side;

const char* const kNothing = "-"; // on this side

template <class Value>
QString whereText(const std::optional<Value>& a, const std::optional<Value>& b)
{
    return a && b ? "differs" : a ? "only in A" : "only in B";
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
    return side ? json(side->value) : Json();
}

Json wordJson(const std::optional<QString>& word)
{
    return word ? json(*word) : Json();
}

Json registersJson(const QList<RegisterDifference>& registers)
{
    Json list = Json::array();
    for (const RegisterDifference& word : registers)
        list.push_back({{"address", word.address},
                        {"variables", json(word.variables)},
                        {"difference", json(whereText(word.a, word.b))},
                        {"a", wordJson(word.a)},
                        {"b", wordJson(word.b)}});
    return list;
}

Json fieldJson(const FeatureDifference& field)
{
    return {{"name", json(field.name)},
            {"difference", json(whereText(field.a, field.b))},
            {"a", valueJson(field.a)},
            {"b", valueJson(field.b)}};
}

Json featureJson(const FeatureDifference& difference)
{
    const auto& [name, a, b, registers] = difference;
    Json object = fieldJson(difference);
    object["type"] = json((a ? a->type : b->type));
    if (a && b && a->type != b->type)
        object["type_b"] = json(b->type);
    if (a && !a->entryName.isEmpty())
        object["entry_a"] = json(a->entryName);
    if (b && !b->entryName.isEmpty())
        object["entry_b"] = json(b->entryName);
    if (difference.isRegisterBlock())
        object["registers"] = registersJson(registers);
    return object;
}

Json sourceJson(const FeatureSource& source)
{
    const Json camera = source.camera ? cameraJson(*source.camera) : Json();
    return {{"path", source.camera ? Json() : json(source.path)}, {"camera", camera}};
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

Json diffJson(const FeatureComparison& comparison, const FeatureSource& a, const FeatureSource& b)
{
    Json object = {{"a", sourceJson(a)},      {"b", sourceJson(b)},        {"equal", comparison.isEqual()},
                   {"header", Json::array()}, {"features", Json::array()}, {"left_out", Json::array()}};
    for (const FeatureDifference& field : comparison.header)
        object["header"].push_back(fieldJson(field));
    for (const FeatureDifference& difference : comparison.features)
        object["features"].push_back(featureJson(difference));
    for (const LeftOut& one : comparison.leftOut)
        object["left_out"].push_back({{"name", json(one.name)}, {"why", jsonUnlessEmpty(one.why)}});
    return object;
}

} // namespace companion
