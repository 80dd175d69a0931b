// What is found in a camera's description, and by which name: nodes, listed features and their categories,
// selectors.
#pragma once

#include "jobs/description/IndexedDescription.h"
#include "jobs/description/SelectorPair.h"
#include "jobs/rules/JobMemory.h"

#include <KXCameraControl/KXCameraControl.h>

#include <QDomDocument>
#include <QDomElement>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace ie
{

class FeatureIndex
{
public:
    // Where it is kept: the owner's own fields, which must outlive the index.
    struct Fields
    {
        QDomDocument& document;
        QMap<QString, QDomElement>& nodes;       // by name; the later of two of one name
        QMap<QString, QString>& featureCategory; // feature -> the category that lists it
        QStringList& featureNames;               // as listed, duplicates kept
        QStringList& categoryNames;              // those that the walk took
        QMap<QString, QStringList>& selectorFeatures;
        QList<SelectorPair>& selectorPairs;
    };
    explicit FeatureIndex(const Fields& fields) : m(fields) {}

    enum class Fetched
    {
        Indexed,
        NoMemory,
        NotLoaded // no XML, or none that is safe to parse; the last index stays
    };
    // Fetches over the handle, parses and indexes.
    Fetched fetch(KX_HANDLE handle);
    // False: not loaded.
    bool index(const QString& description);

    // Who selects whom among the listed features; of an index that stands.
    void generateSelectorMap();
    // False where the name is unknown or its element null.
    bool nodeElement(const QString& name, QDomElement& element) const;
    // Replaces `selected`, and appends the pairs to the index.
    void selectedFeatures(const QString& name, QStringList& selected);
    // Appends the names that a node depends on, its own and those of the nodes behind it. Circles never end.
    void collectReferences(const QString& name, QStringList* references, QStringList* variables) const;

    // The first of the list with that name; else a null element.
    static QDomElement findElement(const QString& name, const QDomNodeList& nodes);

private:
    QString fetchText(KX_HANDLE handle);

    Fields m;
    MemoryBlock m_buffer;                                // of the last fetch, kept until the next. Meant.
    std::shared_ptr<const IndexedDescription> m_indexed; // held for others to share
};

} // namespace ie
