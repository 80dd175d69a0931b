#include "iefeatures/console/Text.h"
#include "iefeatures/line/LineReport.h"
#include "jobs/file/RegularFile.h"

#include <QDir>
#include <QSaveFile>

namespace companion
{
namespace
{

// Prometheus, exposition format: backslashes, quotes and line feeds are escaped. All else stays, so that two
// names never become one.
QString labelValue(QString value)
{
    return '"' + value.replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n") + '"';
}

QString sample(const QString& metric, const QString& labels, qint64 value)
{
    return metric + '{' + labels + "} " + QString::number(value) + '\n';
}

QString head(const QString& metric, const QString& help)
{
    return "# HELP " + metric + ' ' + help + "\n# TYPE " + metric + " gauge\n";
}

// One sample a camera: the state that it is in.
QString cameraSamples(const QString& line, const LineCheck& check)
{
    QString text;
    for (const LineCameraCheck& one : check.cameras)
        if (one.match.wanted)
            text += sample("iefeatures_line_camera_state",
                           line + ",camera=" + labelValue(one.match.wanted->name) +
                               ",state=" + labelValue(lineStateWord(one.match.state)),
                           1);
    return text;
}

QString differenceSamples(const QString& line, const LineCheck& check)
{
    QString text;
    for (const LineCameraCheck& one : check.cameras)
        if (one.match.wanted && one.check)
            text += sample("iefeatures_line_camera_differing_features",
                           line + ",camera=" + labelValue(one.match.wanted->name), one.differing());
    return text;
}

QString stateSamples(const QString& line, const LineCheck& check)
{
    QString text;
    for (const LineState state : kLineStates)
        text += sample("iefeatures_line_cameras", line + ",state=" + labelValue(lineStateWord(state)),
                       check.count(state));
    return text;
}

} // namespace

// The same HELP in every file: a collector that reads several lines of one host refuses others.
QByteArray lineMetrics(const QString& line, const std::optional<LineCheck>& check, const QDateTime& now)
{
    const QString label = "line=" + labelValue(line);
    QString text =
        head("iefeatures_line_check_success", "Whether the last check of the line was carried out.") +
        sample("iefeatures_line_check_success", label, check ? 1 : 0) +
        head("iefeatures_line_check_timestamp_seconds", "When the line was last checked.") +
        sample("iefeatures_line_check_timestamp_seconds", label, now.toSecsSinceEpoch());
    if (check)
        text += head("iefeatures_line_cameras", "Cameras of the line in each state.") +
                stateSamples(label, *check) +
                head("iefeatures_line_camera_state", "The state that a camera of the inventory is in.") +
                cameraSamples(label, *check) +
                head("iefeatures_line_camera_differing_features",
                     "Features of a camera that are not as its file says.") +
                differenceSamples(label, *check);
    return text.toUtf8();
}

// Collectors run as users of their own and look at any moment.
QString writeMetrics(const QString& path, const QByteArray& text)
{
    using File = QFileDevice;
    QSaveFile file(QDir::fromNativeSeparators(path)); // or it takes a share for a folder of the current drive
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && file.write(text) == text.size() &&
        file.setPermissions(File::ReadOwner | File::WriteOwner | File::ReadGroup | File::ReadOther) &&
        file.commit();
    return isWritten ? QString() : printable(path) + " cannot be written: " + ie::causeOf(file) + '.';
}

} // namespace companion
