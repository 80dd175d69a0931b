#include "iefeatures/cameras/FolderPairs.h"

#include "iefeatures/console/Text.h"

#include <QDir>

#include <algorithm>

namespace companion
{
namespace
{

// Whatever has such a name: what is no file is told by who reads it.
QStringList namesIn(const QString& folder)
{
    return QDir(folder).entryList({"*.fpk"}, QDir::AllEntries | QDir::Hidden | QDir::System |
                                                 QDir::NoDotAndDotDot | QDir::CaseSensitive);
}

QStringList titlesOf(const std::vector<ListedCamera>& cameras)
{
    QStringList titles;
    for (const ListedCamera& camera : cameras)
        titles += camera.hasTwin ? camera.title() : camera.title() + " at " + printable(camera.address);
    return titles;
}

class Pairing
{
public:
    Pairing(const QString& folder, FileNaming naming, const std::vector<ListedCamera>& found)
        : m_folder(folder), m_naming(naming), m_found(found)
    {
        m_pairs.lonelyFiles = namesIn(folder);
        m_names = m_pairs.lonelyFiles;
    }

    FolderPairs with(const std::vector<ListedCamera>& chosen)
    {
        for (const ListedCamera& camera : chosen)
            take(camera);
        for (const ListedCamera& camera : m_found)
            if (isCalled(camera))
                m_pairs.lonelyFiles.removeAll(fileNameOf(camera, m_naming));
        m_pairs.ambiguities.removeDuplicates();
        return m_pairs;
    }

private:
    bool isCalled(const ListedCamera& camera) const { return fileNameProblem(camera, m_naming).isEmpty(); }

    void take(const ListedCamera& camera)
    {
        const QString name = fileNameOf(camera, m_naming);
        if (!isCalled(camera))
            m_pairs.lonelyCameras.push_back({camera, fileNameProblem(camera, m_naming)});
        else if (!m_names.contains(name))
            m_pairs.lonelyCameras.push_back({camera, "the folder has no file " + printable(name) + '.'});
        else if (const auto all = namesakes(name); all.size() > 1)
            m_pairs.ambiguities += QString("The file %1 may be of more than one camera: %2.")
                                       .arg(printable(name), titlesOf(all).join(", "));
        else
            m_pairs.pairs.push_back({camera, QDir(m_folder).filePath(name)});
    }

    std::vector<ListedCamera> namesakes(const QString& name) const
    {
        std::vector<ListedCamera> all;
        std::copy_if(m_found.begin(), m_found.end(), std::back_inserter(all),
                     [&](const ListedCamera& camera) {
                         return isCalled(camera) && fileNameOf(camera, m_naming) == name;
                     });
        return all;
    }

    const QString m_folder;
    const FileNaming m_naming;
    const std::vector<ListedCamera>& m_found;
    QStringList m_names;
    FolderPairs m_pairs;
};

} // namespace

QString folderProblem(const QString& folder)
{
    return namesIn(folder).isEmpty()
               ? "The folder has no file to pair with a camera (*.fpk): " + printable(folder)
               : QString();
}

FolderPairs pairUp(const QString& folder, FileNaming naming, const std::vector<ListedCamera>& chosen,
                   const std::vector<ListedCamera>& found)
{
    return Pairing(folder, naming, found).with(chosen);
}

} // namespace companion
