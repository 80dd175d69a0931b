#include "iefeatures/imports/PartialFile.h"

#include "iefeatures/console/Text.h"
#include "iefeatures/files/FeaturesFileInput.h"

#include "jobs/file/FeaturesFile.h"
#include "jobs/file/WholeFile.h"

#include <algorithm>

namespace companion
{
namespace
{

// As imports read it: of several names of a plain feature the last one holds.
QString nameOf(const QDomElement& feature)
{
    if (feature.tagName() == "ComplexFeature")
        return feature.attribute("name");
    return feature.lastChildElement("Name").text();
}

// Gives the names that are left.
QStringList cut(QDomElement features, const NamePatterns& wanted)
{
    QStringList left;
    for (QDomElement element = features.firstChildElement(); !element.isNull();) {
        const QDomElement next = element.nextSiblingElement();
        if (!wanted.match(nameOf(element)))
            features.removeChild(element);
        else
            left += nameOf(element);
        element = next;
    }
    return left;
}

} // namespace

QString writePartialFile(const QString& file, const QStringList& names, const QString& target)
{
    ie::LoadedFile loaded = ie::loadFeaturesFile(file);
    if (loaded.failure != ie::LoadedFile::Failure::None)
        return unreadableText(file);
    const QStringList left =
        cut(loaded.document.documentElement().firstChildElement("Features"), NamePatterns(names));
    for (const QString& name : names) {
        const NamePatterns pattern(QStringList{name});
        if (std::none_of(left.begin(), left.end(), [&](const QString& one) { return pattern.match(one); }))
            return QString("The file has no feature %1: %2").arg(printable(name), printable(file));
    }
    const bool isWritten = ie::writeWholeBytes(target, loaded.document.toString(-1).toUtf8());
    return isWritten ? QString() : "The file cannot be written: " + printable(target);
}

} // namespace companion
