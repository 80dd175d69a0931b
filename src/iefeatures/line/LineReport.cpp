#include "iefeatures/line/LineReport.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/check/CheckReport.h"
#include "iefeatures/check/EntryLines.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"

#include <algorithm>

namespace companion
{
namespace
{

constexpr EntryVerdict kAsides[] = {EntryVerdict::State, EntryVerdict::Session, EntryVerdict::Automatic,
                                    EntryVerdict::Ignored};

QString shownValue(const QString& value)
{
    return value.isEmpty() ? QString("(none)") : printable(value);
}

QString placeLine(const LineDifference& difference)
{
    return QString("%1: %2, should be %3")
        .arg(difference.what, shownValue(difference.found), shownValue(difference.expected));
}

QStringList placeLines(const LineCameraCheck& one)
{
    QStringList lines;
    if (!one.match.reason.isEmpty())
        lines += printable(one.match.reason);
    for (const LineDifference& difference : one.match.differences)
        lines += placeLine(difference);
    return lines;
}

QString tableText(const LineCheck& check)
{
    QList<QStringList> rows = {{"CAMERA", "STATE", "MODEL", "SERIAL", "ADDRESS", "ASIDE"}};
    for (const LineCameraCheck& one : check.cameras) {
        const std::optional<ListedCamera>& camera = one.match.camera;
        const InventoryCamera* wanted = one.match.wanted;
        rows += {printable(wanted ? wanted->name : "-"),
                 lineStateWord(one.match.state),
                 printable(camera ? camera->model : wanted->model),
                 printable(camera ? camera->serial : wanted->serial),
                 printable(camera ? camera->address : wanted->address),
                 lineAsides(one)};
    }
    const Align left = Align::Left;
    return alignedRows({left, left, left, left, left, left}, rows);
}

QString detailText(const LineCameraCheck& one, const ReportStyle& style)
{
    QString text;
    for (const QString& line : placeLines(one))
        text += "  " + line + '\n';
    if (one.check)
        text += entryLines(*one.check, style);
    return text.isEmpty() ? text
                          : printable(one.name()) + ": " + lineStateWord(one.match.state) + '\n' + text;
}

// Those that are not as they should be, whole: what is as it should be fills no log.
Json featuresJson(const CameraCheck& check)
{
    CameraCheck amiss = check;
    amiss.entries.erase(std::remove_if(amiss.entries.begin(), amiss.entries.end(),
                                       [](const EntryCheck& entry) { return !isAmiss(entry); }),
                        amiss.entries.end());
    return checkJson(amiss)["features"];
}

} // namespace

QString lineAsides(const LineCameraCheck& one)
{
    QStringList parts;
    for (const EntryVerdict verdict : kAsides) // what tells one unit from another always differs
        if (const int count = verdict == EntryVerdict::State ? 0 : one.count(verdict))
            parts += QString("%1: %2").arg(verdictWord(verdict)).arg(count);
    if (one.lacksComparison())
        parts += "features not compared";
    return parts.join(", ");
}

QStringList lineProblems(const LineCameraCheck& one)
{
    QStringList lines = placeLines(one);
    if (one.check)
        lines += printableLines(entryLines(*one.check, Detail::Attention));
    for (QString& line : lines)
        line = line.trimmed();
    return lines;
}

QString lineCounts(const LineCheck& check)
{
    QStringList parts;
    for (const LineState state : kLineStates)
        if (const int count = check.count(state))
            parts += QString::number(count) + ' ' + lineStateWord(state);
    const auto cameras = check.cameras.size();
    const QString head = QString("%1 camera%2").arg(cameras).arg(cameras == 1 ? "" : "s");
    return parts.isEmpty() ? head : head + ": " + parts.join(", ");
}

QString lineText(const LineCheck& check, const ReportStyle& style)
{
    QString details;
    for (const LineCameraCheck& one : check.cameras)
        details += detailText(one, style);
    return tableText(check) + lineCounts(check) + '\n' + details;
}

Json lineJson(const LineCameraCheck& one)
{
    const LineMatch& match = one.match;
    Json object = {{"name", match.wanted ? json(match.wanted->name) : Json()},
                   {"state", json(lineStateWord(match.state))},
                   {"reason", jsonUnlessEmpty(match.reason)},
                   {"camera", match.camera ? cameraJson(*match.camera) : Json()},
                   {"mac", match.camera ? jsonUnlessEmpty(match.camera->mac) : Json()},
                   {"firmware", jsonUnlessEmpty(one.firmware())},
                   {"compared", one.check.has_value()},
                   {"differences", Json::array()},
                   {"features", one.check ? featuresJson(*one.check) : Json::array()},
                   {"aside", Json::object()}};
    for (const LineDifference& difference : match.differences)
        object["differences"].push_back({{"what", json(difference.what)},
                                         {"expected", json(difference.expected)},
                                         {"found", json(difference.found)}});
    for (const EntryVerdict verdict : kAsides)
        object["aside"][verdictWord(verdict).toStdString()] = one.count(verdict);
    return object;
}

} // namespace companion
