#include "iefeatures/check/EntryLines.h"

#include "iefeatures/console/RegisterText.h"
#include "iefeatures/console/Text.h"

#include <QMap>

#include <algorithm>
#include <map>

namespace companion
{
namespace
{

constexpr int kShortestValue = 12; // columns
const char* const kNoCategory = "in no category";
const char* const kIndent = "      ";

bool isAsExpected(const EntryCheck& entry)
{
    return entry.verdict == EntryVerdict::Unchanged || entry.verdict == EntryVerdict::Applied;
}

// Both sides have a value, and another one.
bool isDifference(const EntryCheck& entry)
{
    switch (entry.verdict) {
    case EntryVerdict::Absent:
    case EntryVerdict::Broken:
    case EntryVerdict::Skipped:
        return false;
    default:
        return !isAsExpected(entry);
    }
}

bool isWorthALine(const EntryCheck& entry, const ReportStyle& style)
{
    if (isAsExpected(entry) || (style.hasDifferencesOnly && !isDifference(entry)))
        return false;
    return style.detail == Detail::All || entry.verdict == EntryVerdict::WouldChange || isAmiss(entry);
}

// "0x0000000A 0x00000000", "FrameStart (1)"
QString shown(const EntryCheck& entry, const QString& value, const QString& entryName)
{
    if (entry.isRegister)
        return hexWords(value).join(' ');
    return printable(entryName.isEmpty() ? value : entryName + " (" + value + ')');
}

// What is said of an entry's values: words and values in turn.
struct Values
{
    QStringList words;
    QStringList values;

    void add(const QString& word, const QString& value)
    {
        words += word;
        values += value;
    }

    QString text() const
    {
        QString text;
        for (int i = 0; i < words.size(); ++i)
            text += words[i] + values[i];
        return text;
    }

    // Cut to at most that many columns, as far as values can be cut.
    QString fitted(int columns) const
    {
        const int excess = displayWidth(text()) - columns;
        if (excess <= 0)
            return text();
        Values cut = *this;
        int room = columns;
        for (const QString& word : words)
            room -= displayWidth(word);
        for (int i = 0; i < values.size(); ++i) {
            const int share = room / (values.size() - i);
            cut.values[i] = shortened(values[i], std::max(kShortestValue, share));
            room -= displayWidth(cut.values[i]);
        }
        return cut.text();
    }
};

Values targetsAndCameras(const EntryCheck& entry, const char* target)
{
    Values values;
    if (!entry.cameraValue.isNull())
        values.add("camera ", shown(entry, entry.cameraValue, entry.cameraEntry));
    if (!entry.fileValue.isNull())
        values.add((values.words.isEmpty() ? "" : ", ") + QString(target) + ' ',
                   shown(entry, entry.fileValue, entry.fileEntry));
    return values;
}

Values valuesOf(const EntryCheck& entry, const char* target)
{
    switch (entry.verdict) {
    case EntryVerdict::WouldChange: {
        Values values;
        values.add("", entry.cameraValue.isNull() ? "?" : shown(entry, entry.cameraValue, entry.cameraEntry));
        values.add(" -> ", shown(entry, entry.newValue, entry.newEntry));
        return values;
    }
    case EntryVerdict::State:
    case EntryVerdict::Session:
    case EntryVerdict::Automatic:
    case EntryVerdict::Ignored:
    case EntryVerdict::Coerced:
    case EntryVerdict::NotApplied:
    case EntryVerdict::NotWritable:
    case EntryVerdict::OutOfRange:
        return targetsAndCameras(entry, target);
    default:
        return {};
    }
}

// "  not applied: Width: camera 1, file 2: why", on several lines where the columns are not enough. Values
// are cut where they do not fit a line of their own.
QString lineOf(const QString& head, const Values& values, const QString& reason, int columns)
{
    QStringList parts = {head, values.text(), reason};
    parts.removeAll({});
    const QString whole = "  " + parts.join(": ");
    if (columns <= 0 || displayWidth(whole) <= columns)
        return whole + '\n';
    const int room = std::max(kShortestValue, columns - int(qstrlen(kIndent)));
    QString text = "  " + head;
    if (displayWidth(text) >= columns) // a colon may follow
        text = "  " + wrapped(head, room - 1).join(QString('\n') + kIndent);
    if (!values.words.isEmpty() && displayWidth(text.section('\n', -1) + ": " + values.text()) <= columns)
        text += ": " + values.text();
    else if (!values.words.isEmpty())
        text += QString(":\n") + kIndent + values.fitted(room);
    if (!reason.isEmpty())
        for (const QString& line : wrapped(reason, room))
            text += '\n' + (kIndent + line);
    return text + '\n';
}

QString linesOf(const EntryCheck& entry, const ReportStyle& style)
{
    const QString title = entry.title().isEmpty() ? QString() : ": " + printable(entry.title());
    QString text;
    if (isWorthALine(entry, style))
        text += lineOf(verdictWord(entry.verdict) + title, valuesOf(entry, style.target),
                       printable(entry.reason), style.columns);
    if (!style.hasDifferencesOnly)
        for (const QString& warning : entry.warnings)
            text += lineOf("warning" + title, {}, printable(warning), style.columns);
    return text;
}

bool isSameRegister(const EntryCheck& one, const EntryCheck& other)
{
    return one.address && one.address == other.address && one.verdict == other.verdict &&
           one.fileValue == other.fileValue && one.cameraValue == other.cameraValue &&
           one.newValue == other.newValue && one.reason == other.reason && one.warnings == other.warnings;
}

// A register that several features stand for is told once, with all their names.
std::vector<EntryCheck> eachOnce(const std::vector<EntryCheck>& entries)
{
    struct Told
    {
        size_t place;
        QString lastName;
    };
    std::vector<EntryCheck> once;
    std::map<qint64, Told> registers;
    for (const EntryCheck& entry : entries) {
        const auto known = entry.address ? registers.find(*entry.address) : registers.end();
        if (known != registers.end() && isSameRegister(once[known->second.place], entry)) {
            auto& [place, lastName] = known->second;
            if (lastName != entry.feature)
                once[place].feature += ", " + entry.feature;
            lastName = entry.feature;
            continue;
        }
        if (entry.address)
            registers[*entry.address] = {once.size(), entry.feature};
        once.push_back(entry);
    }
    return once;
}

} // namespace

QString entryLines(const CameraCheck& check, const ReportStyle& style)
{
    if (style.detail == Detail::Summary)
        return {};
    QStringList categories; // in the order met; one without a name where nothing is grouped
    QMap<QString, QString> first;
    QMap<QString, QString> others;
    for (const EntryCheck& entry : eachOnce(check.entries)) {
        const QString lines = linesOf(entry, style);
        const QString category = !style.isGrouped           ? ""
                                 : entry.category.isEmpty() ? kNoCategory
                                                            : entry.category;
        if (!lines.isEmpty() && !categories.contains(category))
            categories += category;
        (isAmiss(entry) ? first : others)[category] += lines;
    }
    QString text;
    for (const QString& category : qAsConst(categories))
        text += (category.isEmpty() ? QString() : ' ' + printable(category) + ":\n") + first[category] +
                others[category];
    return text;
}

} // namespace companion
