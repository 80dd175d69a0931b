// A description that is indexed into fields of its own.
#pragma once

#include "jobs/description/FeatureIndex.h"

namespace tests
{

struct OwnDescription
{
    QDomDocument document;
    QMap<QString, QDomElement> nodes;
    QMap<QString, QString> featureCategory;
    QStringList featureNames;
    QStringList categoryNames;
    QMap<QString, QStringList> selectorFeatures;
    QList<SelectorPair> selectorPairs;
    ie::FeatureIndex index{
        {document, nodes, featureCategory, featureNames, categoryNames, selectorFeatures, selectorPairs}};
};

} // namespace tests
