// The operations on the camera's description that the suite knows as the worker's.
#include "jobs/rules/JobLog.h"
#include "jobs/worker/QOperateThread.h"

void QOperateThread::GenerateFeatureXmlMap()
{
    switch (m_index.fetch(m_hDevice)) {
    case ie::FeatureIndex::Fetched::NoMemory:
        IE_JOB_LOG_PLAIN("CAMEAR_CREAT_BUF_FAILED");
        CloseDevice(); // reports an end as well; the job goes on and reports its own. Meant.
        break;
    case ie::FeatureIndex::Fetched::NotLoaded:
        IE_JOB_LOG_PLAIN("Load xml failed.");
        break;
    case ie::FeatureIndex::Fetched::Indexed:
        break;
    }
}

void QOperateThread::GenerateSelectorMap()
{
    m_index.generateSelectorMap();
}

bool QOperateThread::GetNodeElement(const QString& strName, QDomElement& element) const
{
    return m_index.nodeElement(strName, element);
}

void QOperateThread::GetSelectedFeatures(const QString& strName, QStringList& lstSelected)
{
    m_index.selectedFeatures(strName, lstSelected);
}

QDomElement QOperateThread::FindElementByName(const QString& strName, const QDomNodeList& nodes) const
{
    return ie::FeatureIndex::findElement(strName, nodes);
}

void QOperateThread::CollectNodeReferences(const QString& strName, QStringList* pReferences,
                                           QStringList* pVariables) const
{
    m_index.collectReferences(strName, pReferences, pVariables);
}
