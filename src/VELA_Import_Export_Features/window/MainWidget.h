// The program's window: device tree and device table below a bar that holds the buttons or the progress of a
// batch.
#pragma once

#include <StyledCtl/ORBCustomMainWindow.h>
#include <SuiteTools/StructDeviceInfo.h>

#include <QIcon>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

class ImportExportFeaturesSelectedWidget;
class ORBCustomCheckHeaderView;
class ORBCustomLabel;
class ORBCustomLoadingDialog;
class ORBCustomPushButton;
class ORBCustomTableWidget;
class QHBoxLayout;
class QOperateThread;
class QStackedWidget;
class QTableWidgetItem;
class QTreeWidgetItem;
class QVBoxLayout;
class VELADeviceTree;

class MainWidget : public ORBCustomMainWindow
{
    Q_OBJECT

public:
    explicit MainWidget(QWidget* parent = nullptr);
    ~MainWidget() override;

public slots:
    void OnBtnRefresh();
    void OnEndRefresh();
    void OnBtnImport();
    void OnBtnExport();
    void OnShowMsg(QString strTitle, QString strContent, QString strDetail);
    void onNewDevice(QTreeWidgetItem* pItem);
    void onDeleteDevice(QTreeWidgetItem* pItem);
    void onUpdateDevice(QTreeWidgetItem* pItem);
    void OnTreeSelectesChanged();
    void onCellCheckStateChanged(int nRow, int nColumn);
    void onHeaderCheckStateChanged(int nColumn);
    void onSortTableWidget(int nColumn, bool bAscending);
    void onBeginThread(long lCamerID, unsigned int nThreadType);
    void onEndThread(long lCameraID, unsigned int nThreadType, QString strFilePath);
    void onThreadInfo(long nDeviceID, QString strMsg, bool bFailed);
    void onBackClicked();
    void OnCheckListBtn();
    void OnSelectedChecked(int nIndex, bool bChecked);

protected:
    void changeEvent(QEvent* pEvent) override;
    void closeEvent(QCloseEvent* pEvent) override;
    void customEvent(QEvent* pEvent) override;

private:
    friend class MainWidgetProbe; // tests look at the window's state through it

    // Set-up.
    void SetTitleBar();
    void BuildWidgets();
    void BuildButtons();
    void BuildCounters();
    bool ConnectWidgets();
    void BuildLayout();
    QWidget* BuildButtonPage();
    QWidget* BuildProgressPage();
    void SetTexts();
    void SetBatchCaptions(int nOperateType);
    void ApplyEncodingType();

    // Batches.
    struct Job
    {
        int nBatch = 0;
        bool bBegun = false; // its begin signal was handled: it counts as running
    };
    void StartBatch(int nOperateType, const QString& strPath);
    QList<StructDeviceInfo> TickedDevices() const;
    QOperateThread* WorkerOf(int nDeviceID);
    void SetOperationStatus(int nRow, const QString& strText, const QBrush& color);
    void CountRunning(int nChange);
    void CountEnd(bool bSuccess);
    void ClearCounts();
    bool HasJobs() const;
    bool IsOfEarlierBatch(int nDeviceID) const;
    void TakeLastSignals(int nDeviceID);
    void DeviceLeaves(int nDeviceID, const QString& strName);
    void NoteLostJob(const QString& strName);
    Job TakeJob(int nDeviceID);
    void EndJob(const Job& job, bool bSuccess);
    void FinishBatch();

    // Device table.
    void SetUpTable();
    void SetUpTree();
    ORBCustomCheckHeaderView* Header() const;
    void SetColumnWidths();
    void ApplyColumnFlags();
    void StretchLastVisibleColumn();
    int FindDeviceRow(long nDeviceID) const;
    int FilledRows() const;
    int TickedRows() const;
    int TickableRows() const;
    bool SetCellText(int nRow, int nColumn, const QString& strText);
    void FillRow(int nRow, const StructDeviceInfo& stDevice, const QString& strInterface);
    bool FillIdentity(int nRow, const StructDeviceInfo& stDevice, const QString& strInterface);
    void FillStatus(int nRow, int nStatus);
    void SetStatusWord(QTableWidgetItem* pItem);
    void SetStatusWords();
    void DecideRowVisibility(int nRow);
    void ClearOperationStatus();
    int CurrentNodeType() const;
    bool IsPortIdAllowed() const;

    bool m_bHaveSuccess = false;
    int m_nRunningNum = 0; // begun and not ended; jobs count from their begin signal on, not from their start
    int m_nSuccessNum = 0;
    int m_nFailedNum = 0;
    int m_nOperateType = -1; // a WindowOperation
    VELADeviceTree* m_pDeviceTree = nullptr;
    ORBCustomTableWidget* m_pTableWidget = nullptr;
    QHBoxLayout* m_pBtnLayout = nullptr;
    ORBCustomPushButton* m_pImportBtn = nullptr;
    ORBCustomPushButton* m_pExportBtn = nullptr;
    ORBCustomLoadingDialog* m_pLoadingDlg = nullptr;
    QVBoxLayout* m_pMainLayout = nullptr;
    QMap<int, QOperateThread*> m_mapThreads;
    unsigned int m_nSupportNum = 0;
    QString m_strLastPath;
    ORBCustomLabel* m_pRunningNumLabel = nullptr;
    ORBCustomLabel* m_pRunningTextLabel = nullptr;
    ORBCustomLabel* m_pSuccessNumLabel = nullptr;
    ORBCustomLabel* m_pSuccessTextLabel = nullptr;
    ORBCustomLabel* m_pFailedNumLabel = nullptr;
    ORBCustomLabel* m_pFailedTextLabel = nullptr;
    QWidget* m_pProgressPage = nullptr;
    QWidget* m_pButtonPage = nullptr;
    QStackedWidget* m_pTopStack = nullptr;
    ORBCustomPushButton* m_pBackBtn = nullptr;
    ORBCustomPushButton* m_pCheckListBtn = nullptr;
    ImportExportFeaturesSelectedWidget* m_pColumnChooser = nullptr;

    // Jobs whose end has not been handled, by device: a device that leaves takes its own job along and no
    // other, and a job of an earlier batch counts in none.
    QMap<int, Job> m_mapJobs;
    int m_nBatch = 0;             // of the running or last batch; counts from 1
    int m_nBatchJobs = 0;         // that it was started with
    unsigned int m_nLastType = 0; // of the last end signal, for the summary
    QString m_strLastFile;
    // By file. One for all rows and for good: Qt keeps what it makes of each for a while, in all sizes.
    QMap<QString, QIcon> m_mapStatusIcons;
    QStringList m_lstLost; // devices of this batch that left during their jobs
};
