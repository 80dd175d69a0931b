// Opens a worker's inside to tests: its fields as references, its operations one by one.
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

    bool getBoolean(const QString& name, bool* value, int* code)
    {
        return m_worker.GetBooleanNodePropertyValue(name, value, code);
    }
    bool getEnumeration(const QString& name, KX_EnumValue* value, int* code)
    {
        return m_worker.GetEnumerationNodePropertyValue(name, value, code);
    }
    bool getFloat(const QString& name, KX_FloatValue* value, int* code)
    {
        return m_worker.GetFloatNodePropertyValue(name, value, code);
    }
    bool getInteger(const QString& name, KX_IntegerValue* value, int* code)
    {
        return m_worker.GetIntegerNodePropertyValue(name, value, code);
    }
    bool getString(const QString& name, QString& value, __int64* maximum, int* code)
    {
        return m_worker.GetStringRegNodePropertyValue(name, value, maximum, code);
    }
    KX_XML_AccessMode accessMode(const QString& name, int* code)
    {
        return m_worker.GetNodeAccessMode(name, code);
    }
    bool setBoolean(const QString& name, bool value, int* code)
    {
        return m_worker.SetBooleanNodePropertyValue(name, value, code);
    }
    bool setEnumeration(const QString& name, unsigned int value, int* code)
    {
        return m_worker.SetEnumerationNodePropertyValue(name, value, code);
    }
    bool setFloat(const QString& name, float value, int* code)
    {
        return m_worker.SetFloatNodePropertyValue(name, value, code);
    }
    bool setInteger(const QString& name, __int64 value, int* code)
    {
        return m_worker.SetIntegerNodePropertyValue(name, value, code);
    }
    bool setString(const QString& name, const QString& value, int* code)
    {
        return m_worker.SetStringRegNodePropertyValue(name, value, code);
    }
    bool readMemory(__int64 address, void* buffer, __int64 length, int* code)
    {
        return m_worker.ReadRegisterMemory(address, buffer, length, code);
    }
    bool writeMemory(__int64 address, void* buffer, __int64 length, int* code)
    {
        return m_worker.WriteRegisterMemory(address, buffer, length, code);
    }

    // As GenerateFeatureXmlMap() does with a text that it could parse.
    bool index(const QString& description)
    {
        if (!document.setContent(description))
            return false;
        m_worker.IndexDescription();
        return true;
    }
    void generateFeatureMap() { m_worker.GenerateFeatureXmlMap(); }
    void generateSelectorMap() { m_worker.GenerateSelectorMap(); }
    bool nodeElement(const QString& name, QDomElement& element) const
    {
        return m_worker.GetNodeElement(name, element);
    }
    void selectedFeatures(const QString& name, QStringList& selected)
    {
        m_worker.GetSelectedFeatures(name, selected);
    }
    QDomElement findElement(const QString& name, const QDomNodeList& list) const
    {
        return m_worker.FindElementByName(name, list);
    }
    void collectReferences(const QString& name, QStringList* references, QStringList* variables) const
    {
        m_worker.CollectNodeReferences(name, references, variables);
    }
    bool exportXml() { return m_worker.export_xml(); }

private:
    QOperateThread& m_worker;
};
