// Opens to tests what the suite knows of a worker and other classes do not show: its fields, as references,
// its connection, and the two steps that fill the fields.
#pragma once

#include "jobs/worker/QOperateThread.h"

class QOperateThreadProbe
{
public:
    explicit QOperateThreadProbe(QOperateThread& worker)
        : running(worker.m_bRunning), type(worker.m_nThreadType), device(worker.m_stDevice),
          path(worker.m_strFilePath), handle(worker.m_hDevice), nodes(worker.m_mapNodeElement),
          document(worker.m_domGenICam), featureCategory(worker.m_mapFeatureCategory),
          featureNames(worker.m_lstFeatureNames), categoryNames(worker.m_lstCategoryNames),
          errorCode(worker.m_nErrorCode), selectorFeatures(worker.m_mapSelectorFeatures),
          selectorPairs(worker.m_lstSelectorPairs), filter(worker.m_mapFeatureFilter), m_worker(worker)
    {}

    bool& running;
    unsigned int& type;
    StructDeviceInfo& device;
    QString& path;
    KX_HANDLE& handle;
    QMap<QString, QDomElement>& nodes;
    QDomDocument& document;
    QMap<QString, QString>& featureCategory;
    QStringList& featureNames;
    QStringList& categoryNames;
    unsigned int& errorCode;
    QMap<QString, QStringList>& selectorFeatures;
    QList<SelectorPair>& selectorPairs;
    QMap<QString, QStringList>& filter;

    bool open() { return m_worker.OpenDevice(); }
    void close() { m_worker.CloseDevice(); }

    void generateFeatureMap() { m_worker.GenerateFeatureXmlMap(); }
    void generateSelectorMap() { m_worker.GenerateSelectorMap(); }

private:
    QOperateThread& m_worker;
};
