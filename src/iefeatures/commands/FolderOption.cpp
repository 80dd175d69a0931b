#include "iefeatures/commands/FolderOption.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/console/Verdict.h"
#include "iefeatures/files/FeaturesFileInput.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>

namespace companion
{
namespace
{

const char* const kNothing = "-";

QString counted(int count, const char* one, const char* many)
{
    return QString::number(count) + ' ' + (count == 1 ? one : many);
}

// "2 applied, 1 incomplete", in the order in which they came.
QString countsText(const QStringList& results)
{
    QStringList words = results;
    words.removeDuplicates();
    QStringList counts;
    for (const QString& word : words)
        counts += QString("%1 %2").arg(results.count(word)).arg(word);
    return counts.join(", ");
}

} // namespace

void FolderOption::addOptions(CLI::App& app)
{
    app.add_option("--by", m_by,
                   "Of a folder: what its files are called, name, address or serial of their cameras; else "
                   "MODEL_SERIAL")
        ->check(CLI::IsMember(fileNamingWords()))
        ->type_name("BY");
}

int FolderOption::setPath(Console& console, const QString& path)
{
    m_folder = path;
    m_isFolder = QFileInfo(path).isDir();
    if (!m_isFolder && !m_by.empty()) {
        console.err(std::string("--by needs a folder.\n"));
        return ExitUsage;
    }
    const QString problem = m_isFolder ? folderProblem(path) : QString();
    if (problem.isEmpty())
        return ExitWell;
    tellError(console, {{}, CameraVerdict::UnreadableFile, problem}, console.isJson());
    return ExitInputOutput;
}

CameraSelection::Choice FolderOption::pair(const CameraSelection& selection,
                                           const std::vector<ListedCamera>& found)
{
    CameraSelection::Choice choice = selection.choose(found);
    m_pairs = pairUp(m_folder, fileNaming(m_by), choice.cameras, found);
    choice.cameras.clear();
    for (const FolderPairs::Pair& pair : m_pairs.pairs)
        choice.cameras.push_back(pair.camera);
    for (const FolderPairs::Lonely& lonely : m_pairs.lonelyCameras)
        choice.lacks += lonely.camera.title() + ": " + lonely.why;
    // Who chooses cameras one by one has not asked for all files.
    if (!selection.takesAll())
        m_pairs.lonelyFiles.clear();
    for (const QString& file : m_pairs.lonelyFiles)
        choice.misses += "No camera is there for the file " + printable(file) + '.';
    choice.refusals = m_pairs.ambiguities;
    return choice;
}

void FolderOption::tellSummary(Console& console, const QStringList& results) const
{
    if (m_pairs.pairs.empty() && m_pairs.lonelyFiles.isEmpty() && m_pairs.lonelyCameras.empty())
        return;
    QStringList all = results;
    while (all.size() < int(m_pairs.pairs.size()))
        all += verdictWord(CameraVerdict::NotStarted);
    if (!console.isJson())
        return console.out(summaryText(all));
    Json object = {{"folder", json(m_folder)},
                   {"by", json(namingText(fileNaming(m_by)))},
                   {"pairs", Json::array()},
                   {"files_without_camera", json(m_pairs.lonelyFiles)},
                   {"cameras_without_file", Json::array()}};
    for (size_t i = 0; i < m_pairs.pairs.size(); ++i)
        object["pairs"].push_back({{"path", json(m_pairs.pairs[i].path)},
                                   {"camera", cameraJson(m_pairs.pairs[i].camera)},
                                   {"result", json(all[int(i)])}});
    for (const FolderPairs::Lonely& lonely : m_pairs.lonelyCameras)
        object["cameras_without_file"].push_back(cameraJson(lonely.camera));
    console.object("summary", object);
}

QString FolderOption::summaryText(const QStringList& results) const
{
    QList<QStringList> rows = {{"FILE", "MODEL", "SERIAL", "RESULT"}};
    for (size_t i = 0; i < m_pairs.pairs.size(); ++i)
        rows +=
            {printable(QFileInfo(m_pairs.pairs[i].path).fileName()), printable(m_pairs.pairs[i].camera.model),
             printable(m_pairs.pairs[i].camera.serial), results[int(i)]};
    for (const QString& file : m_pairs.lonelyFiles)
        rows += {printable(file), kNothing, kNothing, "no camera"};
    for (const FolderPairs::Lonely& lonely : m_pairs.lonelyCameras)
        rows += {kNothing, printable(lonely.camera.model), printable(lonely.camera.serial), "no file"};
    QStringList counts{countsText(results)};
    if (!m_pairs.lonelyFiles.isEmpty())
        counts += counted(m_pairs.lonelyFiles.size(), "file without a camera", "files without a camera");
    if (!m_pairs.lonelyCameras.empty())
        counts +=
            counted(int(m_pairs.lonelyCameras.size()), "camera without a file", "cameras without a file");
    counts.removeAll({});
    const Align left = Align::Left;
    return alignedRows({left, left, left, left}, rows) + counts.join(", ") + '\n';
}

} // namespace companion
