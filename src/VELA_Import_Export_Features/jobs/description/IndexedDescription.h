// A description's document and what is found in it, shared by the workers whose cameras have the same one.
#pragma once

#include <QDomDocument>
#include <QDomElement>
#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>

namespace ie
{

// Never changes, so that workers on any thread may read it: reading a document changes nothing in it but
// counts of references, which are atomic. Whoever would change an element has to parse a document of his own.
struct IndexedDescription
{
    QDomDocument document;
    // As in FeatureIndex::Fields.
    QMap<QString, QDomElement> nodes;
    QMap<QString, QString> featureCategory;
    QStringList featureNames;
    QStringList categoryNames;
};

// From any thread. Null: no XML, or none that is safe to parse. While somebody has the index of a text it is
// not made again; who asks while it is being made waits for it.
std::shared_ptr<const IndexedDescription> indexedDescription(const QString& text);

} // namespace ie
