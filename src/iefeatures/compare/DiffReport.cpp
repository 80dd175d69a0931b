#include "iefeatures/compare/DiffReport.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/RegisterText.h"
#include "iefeatures/console/Text.h"

#include <QMap>

#include <algorithm>

namespace companion
{
namespace
{

using Side = FeatureDifference::Side;

const char* const kNothing = "-"; // on this side
const char* const kDiffers = "differs";
constexpr int kNarrowest = 12; // column
constexpr int kGap = 2;        // between columns

template <class Value>
QString whereText(const std::optional<Value>& a, const std::optional<Value>& b)
{
    return a && b ? kDiffers : a ? "only in A" : "only in B";
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

// Where columns are few, selectors say enough.
QString wordTitle(const QString& name, const RegisterDifference& word, const ReportStyle& style)
{
    QStringList parts{name, hexAddress(word.address), word.variables};
    if (!word.selectors.isEmpty())
        parts = style.columns > 0 ? QStringList{name, word.selectors}
                                  : QStringList{name, hexAddress(word.address), word.selectors};
    return printable(parts.join(' ')).trimmed();
}

// Words that go with the register block's own line have none of theirs.
QList<QStringList> rowsOf(const FeatureDifference& difference, const ReportStyle& style)
{
    const auto& [name, a, b, registers, category] = difference;
    const auto isToldOf = [&](bool isInBoth) { return isInBoth || !style.hasDifferencesOnly; };
    QList<QStringList> rows;
    if (isToldOf(a && b) && (!a || !b || a->type != b->type || a->value != b->value))
        rows.append({whereText(a, b), printable(name), cell(difference, a), cell(difference, b)});
    if (!a || !b)
        return rows;
    for (const RegisterDifference& word : registers)
        if (isToldOf(word.a && word.b))
            rows.append({whereText(word.a, word.b), wordTitle(name, word, style),
                         printable(word.a.value_or(kNothing)), printable(word.b.value_or(kNothing))});
    return rows;
}

QString countsText(const FeatureComparison& comparison)
{
    int both = 0;
    int onlyInA = 0;
    int onlyInB = 0;
    for (const FeatureDifference& difference : comparison.header + comparison.features)
        ++(difference.a && difference.b ? both : difference.a ? onlyInA : onlyInB);
    QString text = QString("%1 different, %2 only in A, %3 only in B").arg(both).arg(onlyInA).arg(onlyInB);
    if (!comparison.leftOut.isEmpty())
        text += QString(", %1 more left out").arg(comparison.leftOut.size());
    return text + '\n';
}

QString leftOutText(const FeatureComparison& comparison, const ReportStyle& style)
{
    if (comparison.leftOut.isEmpty())
        return {};
    QStringList names;
    for (const LeftOut& one : comparison.leftOut)
        names += printable(one.name) + (one.why.isEmpty() ? QString() : " (" + one.why + ')');
    return wrapped("left out: " + names.join(", "), style.columns).join("\n  ") + '\n';
}

// The columns behind the first are cut to what the style has.
void fitRows(QList<QStringList>& rows, const ReportStyle& style)
{
    int widths[4] = {};
    for (const QStringList& row : qAsConst(rows))
        for (int i = 0; i < 4; ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i]));
    const int room = std::max(3 * kNarrowest, style.columns - widths[0] - 3 * kGap);
    const int name = std::min(widths[1], std::max(room - widths[2] - widths[3], room / 2));
    const int a = std::min(widths[2], std::max((room - name) / 2, room - name - widths[3]));
    const int b = std::min(widths[3], room - name - a);
    for (QStringList& row : rows)
        row = QStringList{row[0], shortened(row[1], name), shortened(row[2], a), shortened(row[3], b)};
}

// Grouped: a line for each category, behind the features that none lists.
QString tableText(const FeatureComparison& comparison, const ReportStyle& style)
{
    QList<QStringList> rows = {{"WHERE", "FEATURE", "A", "B"}};
    QMap<int, QString> headings; // before rows
    QList<FeatureDifference> all = comparison.header + comparison.features;
    if (style.isGrouped)
        std::stable_sort(all.begin(), all.end(),
                         [](const FeatureDifference& one, const FeatureDifference& other) {
                             return one.category < other.category;
                         });
    QString category;
    for (const FeatureDifference& difference : qAsConst(all)) {
        const QList<QStringList> own = rowsOf(difference, style);
        if (style.isGrouped && !own.isEmpty() && difference.category != category)
            headings[rows.size()] = category = difference.category;
        rows += own;
    }
    if (rows.size() == 1)
        return {};
    if (style.columns > 0)
        fitRows(rows, style);
    QStringList lines = alignedRows({Align::Left, Align::Left, Align::Left, Align::Left}, rows).split('\n');
    for (auto heading = headings.cbegin(); heading != headings.cend(); ++heading)
        lines[heading.key()].prepend(printable(heading.value()) + ":\n");
    return lines.join('\n');
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
    for (const RegisterDifference& word : registers) {
        Json& object =
            list.emplace_back(Json{{"address", word.address}, {"variables", json(word.variables)}});
        if (!word.selectors.isEmpty())
            object["selectors"] = json(word.selectors);
        object["difference"] = json(whereText(word.a, word.b));
        object["a"] = wordJson(word.a);
        object["b"] = wordJson(word.b);
    }
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
    const auto& [name, a, b, registers, category] = difference;
    Json object = fieldJson(difference);
    object["type"] = json((a ? a->type : b->type));
    if (!category.isEmpty())
        object["category"] = json(category);
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

QString diffText(const FeatureComparison& comparison, const QString& titleA, const QString& titleB,
                 const ReportStyle& style)
{
    QString text = "A: " + titleA + "\nB: " + titleB + '\n' + countsText(comparison);
    if (style.detail == Detail::Summary)
        return text;
    return text + tableText(comparison, style) + leftOutText(comparison, style);
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
