// Builds the text of a features file from a live camera: who it is, then feature by feature.
#pragma once

#include "jobs/export/ExportBudget.h"
#include "jobs/export/RegisterEvaluator.h"
#include "jobs/nodes/NodeAccess.h"

#include <QDomElement>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

namespace ie
{

class FeaturesExport
{
public:
    // The caller's own, living as long as the export: evaluating a feature adds entries to `nodes`.
    struct Source
    {
        KX_HANDLE& handle;
        const NodeAccess& camera;
        QMap<QString, QDomElement>& nodes;
        const QStringList& featureNames; // listed by categories; no other is exported
        const QList<SelectorPair>& selectorPairs;
        bool isGigE;
        std::function<bool(const QString& name)> isSkipped; // protected names included
    };
    explicit FeaturesExport(const Source& source);

    // False: the firmware cannot be read, the line failed, or the thread has been asked to end in the middle
    // of formulas; there is no text then.
    bool build(const QString& modelName, QString& text);

private:
    bool appendHeader(const QString& modelName);
    bool appendFeatures();
    bool appendFeature(const QDomElement& element);

    Source m;
    ExportBudget m_budget;
    RegisterEvaluator m_evaluator;
    QString m_text;
};

} // namespace ie
