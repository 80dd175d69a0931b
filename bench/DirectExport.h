// An export's steps on the calling thread, without its worker.
#pragma once

#include "jobs/description/FeatureIndex.h"
#include "jobs/export/FeaturesExport.h"
#include "jobs/file/WholeFile.h"
#include "jobs/rules/ImportRules.h"

#include <QFile>
#include <QTemporaryDir>

namespace bench
{

// The fields that a worker indexes a description into, fetched and indexed.
class IndexedCamera
{
public:
    IndexedCamera()
    {
        const KX_DeviceInfo device = {};
        KX_CC_CreateHandle(&m_handle, &device);
        KX_CC_OpenDevice(m_handle, KX_ACCESS_EXCLUSIVE, 0);
        m_index.fetch(m_handle);
        m_index.generateSelectorMap();
    }

protected:
    KX_HANDLE m_handle = nullptr;
    QDomDocument m_document;
    QMap<QString, QDomElement> m_nodes;
    QMap<QString, QString> m_featureCategory;
    QStringList m_featureNames;
    QStringList m_categoryNames;
    QMap<QString, QStringList> m_selectorFeatures;
    QList<SelectorPair> m_selectorPairs;
    ie::FeatureIndex m_index{{m_document, m_nodes, m_featureCategory, m_featureNames, m_categoryNames,
                              m_selectorFeatures, m_selectorPairs}};
};

// Exports into a folder of its own.
class ReadyExport : public IndexedCamera
{
public:
    bool exportFile()
    {
        const ie::NodeAccess camera(m_handle);
        const auto isSkipped = [](const QString& name) { return ie::isProtectedFeature(name); };
        ie::FeaturesExport features(
            {m_handle, camera, m_nodes, m_featureNames, m_selectorPairs, true, isSkipped});
        QString text;
        return features.build({}, text) && ie::writeWholeFile(path(), text);
    }
    QByteArray exported() const
    {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QString path() const { return m_folder.filePath("_.fpk"); }
    QTemporaryDir m_folder;
};

} // namespace bench
