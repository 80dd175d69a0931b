// The worker: one import or export job on one camera, on its own thread.
#pragma once

#include "jobs/description/FeatureIndex.h"
#include "jobs/file/FeaturesFile.h"
#include "jobs/nodes/NodeAccess.h"
#include "jobs/worker/Compatibility.h"

#include <KXCameraControl/KXCameraControl.h>
#include <SuiteTools/StructDeviceInfo.h>

#include <QDomDocument>
#include <QDomElement>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QThread>

enum JobType : unsigned int
{
    JOB_FEATURE_BAG_IMPORT = 0,
    JOB_FEATURE_BAG_EXPORT = 1,
    JOB_FEATURE_XML_IMPORT = 2,
    JOB_FEATURE_XML_EXPORT = 3
};

enum ImportResult : unsigned int
{
    IMPORT_OK = 0,
    IMPORT_ERR_NO_FEATURES = 0xE0000002,
    IMPORT_ERR_VERSION = 0xE0000003,
    IMPORT_ERR_MODEL = 0xE0000004,
    IMPORT_ERR_APPLY = 0xE0000005,
    IMPORT_ERR_ABANDONED = 0xE0000006 // memory ran out, in whatever job
};

// Set up while it is idle, then started; every job ends with SigEndThread after its connection is closed, and
// the worker may be set up and started again. The signals come from the worker's own thread. The destructor
// neither closes the connection (each job does) nor waits.
class QOperateThread : public QThread
{
    Q_OBJECT

public:
    explicit QOperateThread(QObject* parent = nullptr);
    ~QOperateThread() override;

    void SetXmlImportJob(const StructDeviceInfo& stDevice, const QString& strFile);
    void SetXmlExportJob(const StructDeviceInfo& stDevice, const QString& strFolder);
    void SetFeatureBagImportJob(const StructDeviceInfo& stDevice, const QString& strFile);
    void SetFeatureBagExportJob(const StructDeviceInfo& stDevice, const QString& strFolder);
    // A KX_ACCESS_ value: how cameras are opened from now on, which is exclusively unless told. Imports and
    // feature bags need control. An export without exclusive control leaves out who controls the camera
    // (GevCCP): an import of that would give its own control away.
    void SetAccessMode(uint32_t nAccessMode) { m_nAccessMode = nAccessMode; }

    // Starts the job. Where the system gives no thread for it, its begin and its failed end are told all the
    // same, by the event loop of the thread that the worker belongs to.
    void Launch();

    // The result of the last XML import (ImportResult), or that a job was abandoned; to be asked when the job
    // is over.
    unsigned int ErrorCode() const { return m_nErrorCode; }

signals:
    void SigBeginThread(long nDeviceID, unsigned int nThreadType);
    void SigEndThread(long nDeviceID, unsigned int nThreadType, QString strFilePath);
    // bFailed: strMsg is the user text of a failure; else it is information.
    void SigThreadInfo(long nDeviceID, QString strMsg, bool bFailed);

protected:
    void run() override;

private:
    friend class QOperateThreadProbe; // tests look at the worker's state through it

    void SetJob(JobType eType, const StructDeviceInfo& stDevice, const QString& strPath);

    // Connection and end report.
    bool OpenDevice();
    void CloseDevice();
    void GiveDeviceBack();
    void ReportEnd();
    QString DefaultPath() const;

    // Jobs.
    void RunJob();
    void AbandonJob();
    void ReportNotStarted();
    void FeatureBagImport();
    void FeatureBagExport();
    void FeatureXmlImport();
    void FeatureXmlExport();

    // Node access. A status is stored in *pErrorCode whenever the camera library was called.
    bool GetBooleanNodePropertyValue(const QString& strName, bool* pValue, int* pErrorCode = nullptr);
    bool GetEnumerationNodePropertyValue(const QString& strName, KX_EnumValue* pValue,
                                         int* pErrorCode = nullptr);
    bool GetFloatNodePropertyValue(const QString& strName, KX_FloatValue* pValue, int* pErrorCode = nullptr);
    bool GetIntegerNodePropertyValue(const QString& strName, KX_IntegerValue* pValue,
                                     int* pErrorCode = nullptr);
    bool GetStringRegNodePropertyValue(const QString& strName, QString& strValue,
                                       __int64* pMaxLength = nullptr, int* pErrorCode = nullptr);
    KX_XML_AccessMode GetNodeAccessMode(const QString& strName, int* pErrorCode = nullptr);
    bool SetBooleanNodePropertyValue(const QString& strName, bool bValue, int* pErrorCode = nullptr);
    bool SetEnumerationNodePropertyValue(const QString& strName, unsigned int nValue,
                                         int* pErrorCode = nullptr);
    bool SetFloatNodePropertyValue(const QString& strName, float fValue, int* pErrorCode = nullptr);
    bool SetIntegerNodePropertyValue(const QString& strName, __int64 nValue, int* pErrorCode = nullptr);
    bool SetStringRegNodePropertyValue(const QString& strName, const QString& strValue,
                                       int* pErrorCode = nullptr);
    bool ReadRegisterMemory(const __int64& nAddress, void* pBuffer, __int64 nLength,
                            int* pErrorCode = nullptr);
    bool WriteRegisterMemory(const __int64& nAddress, void* pBuffer, __int64 nLength,
                             int* pErrorCode = nullptr);

    // Description.
    void GenerateFeatureXmlMap();
    void GenerateSelectorMap();
    bool GetNodeElement(const QString& strName, QDomElement& element) const;
    void GetSelectedFeatures(const QString& strName, QStringList& lstSelected);
    QDomElement FindElementByName(const QString& strName, const QDomNodeList& nodes) const;
    void CollectNodeReferences(const QString& strName, QStringList* pReferences,
                               QStringList* pVariables) const;

    // Export.
    bool export_xml();
    void LoadStreamableFilter();
    void ChooseSkipList();
    bool IsSkippedFeature(const QString& strName) const;
    bool IsGigE() const;
    bool WriteFeaturesFile(const QString& strText);

    // Import.
    void FailImport(const QString& strLog, const QString& strUserText);
    void FailToLoad(ie::LoadedFile::Failure eFailure);
    void ReportImportResult();
    void ChooseImportSkipList();
    bool import_feature_xml(const QDomDocument& document);
    bool BelongsToCamera(const ie::FeaturesHeader& header);

    // Feature bag.
    void ReportBagFailure(const QString& strLog, const QString& strUserText, KX_Status status);

    bool m_bRunning = true; // true until the first end report; the jobs do not ask it
    unsigned int m_nThreadType = JOB_FEATURE_XML_IMPORT;
    uint32_t m_nAccessMode = KX_ACCESS_EXCLUSIVE;
    StructDeviceInfo m_stDevice;
    QString m_strFilePath;
    KX_HANDLE m_hDevice = nullptr;
    QMap<QString, QDomElement> m_mapNodeElement;
    QDomDocument m_domGenICam;
    QMap<QString, QString> m_mapFeatureCategory;
    QStringList m_lstFeatureNames;
    QStringList m_lstCategoryNames;
    unsigned int m_nErrorCode = IMPORT_OK;
    QMap<QString, QStringList> m_mapSelectorFeatures;
    QList<SelectorPair> m_lstSelectorPairs;
    QMap<QString, QStringList> m_mapFeatureFilter;

    // Not part of what a job leaves behind.
    ie::NodeAccess m_camera{m_hDevice};
    bool m_bEndReported = false; // of the running job
    QString m_strTargetPath;     // the running export's file, as soon as it has its name
    QSet<QString> m_setSkipped;  // the running job's skip list
    ie::FeatureIndex m_index{{m_domGenICam, m_mapNodeElement, m_mapFeatureCategory, m_lstFeatureNames,
                              m_lstCategoryNames, m_mapSelectorFeatures, m_lstSelectorPairs}};
};
