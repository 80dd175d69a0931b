// Imports and exports of all ticked devices: start, progress, end.
#include "window/MainWidget.h"

#include "jobs/worker/QOperateThread.h"

#include <DevListMgr/VELADeviceTree.h>
#include <StyledCtl/ORBCustomControls.h>
#include <StyledCtl/ORBCustomDialogs.h>
#include <StyledCtl/ORBCustomTableWidget.h>
#include <SuiteTools/SuiteTools.h>
#include <SuiteTools/SuiteToolsWidgets.h>

#include <QBrush>
#include <QDir>
#include <QStackedWidget>

namespace
{

constexpr int kStatusColumn = 8;
constexpr int kSuccessRole = Qt::UserRole + 2;
constexpr int kDeviceIdRole = Qt::UserRole + 1;

QBrush neutralBrush()
{
    return QBrush(QColor("#555555"));
}

// Window operations and job types agree in this: even numbers import, odd ones export.
bool isImport(unsigned int nType)
{
    return nType == 0 || nType == 2;
}

bool isExport(unsigned int nType)
{
    return nType == 1 || nType == 3;
}

} // namespace

void MainWidget::OnBtnImport()
{
    const QString strStart = m_strLastPath.isEmpty() ? VELAInterface::userDataPath() : m_strLastPath;
    const QString strFile =
        VELAInterface::getOpenFileName(this, tr("Select Import File"), strStart, tr("Import File(*.fpk)"));
    SetBatchCaptions(0);
    if (strFile.isEmpty())
        return;
    StartBatch(0, strFile);
    m_strLastPath = strFile;
}

void MainWidget::OnBtnExport()
{
    const QString strStart = m_strLastPath.isEmpty() ? VELAInterface::userDataPath() : m_strLastPath;
    const QString strFolder =
        ORBCustom::getExistingDirectory(this, tr("Export Features"), strStart, QFileDialog::ShowDirsOnly);
    SetBatchCaptions(1);
    if (strFolder.isEmpty())
        return;
    StartBatch(1, strFolder);
    m_strLastPath = strFolder;
}

void MainWidget::StartBatch(int nOperateType, const QString& strPath)
{
    ClearOperationStatus();
    const QList<StructDeviceInfo> lstDevices = TickedDevices();
    if (lstDevices.isEmpty())
        return;
    setEnabled(false);
    m_nRunningNum = m_nSuccessNum = m_nFailedNum = 0;
    for (ORBCustomLabel* pLabel : {m_pRunningNumLabel, m_pSuccessNumLabel, m_pFailedNumLabel})
        pLabel->setText("0");
    m_pTopStack->setCurrentWidget(m_pProgressPage);
    m_setLaunched.clear();
    m_setBegun.clear();
    for (const StructDeviceInfo& stDevice : lstDevices) {
        QOperateThread* pWorker = WorkerOf(stDevice.nDeviceID);
        pWorker->wait(); // its last job has reported its end; this is the way out of its thread
        if (isImport(nOperateType))
            pWorker->SetXmlImportJob(stDevice, strPath);
        else
            pWorker->SetXmlExportJob(stDevice, strPath);
        m_setLaunched.insert(stDevice.nDeviceID);
        pWorker->start(QThread::InheritPriority);
    }
    m_nOperateType = nOperateType;
    m_pLoadingDlg->SetLabelText(isImport(nOperateType) ? tr("Importing features...")
                                                       : tr("Exporting features..."));
    m_pLoadingDlg->exec();
}

QList<StructDeviceInfo> MainWidget::TickedDevices() const
{
    QList<StructDeviceInfo> lstDevices;
    for (int nRow = 0; nRow < m_pTableWidget->rowCount(); ++nRow) {
        if (m_pTableWidget->isRowHidden(nRow))
            continue;
        const QTableWidgetItem* pItem = m_pTableWidget->item(nRow, 0);
        if (!pItem)
            break;
        const QTreeWidgetItem* pCamera = m_pDeviceTree->findCameraItem(pItem->data(kDeviceIdRole).toInt());
        if (pCamera && m_pTableWidget->cellCheckState(nRow, 0) == Qt::Checked)
            lstDevices.append(pCamera->data(0, VELADeviceTree::RoleDevice).value<StructDeviceInfo>());
    }
    return lstDevices;
}

QOperateThread* MainWidget::WorkerOf(int nDeviceID)
{
    QOperateThread*& pWorker = m_mapThreads[nDeviceID];
    if (!pWorker) {
        pWorker = new QOperateThread(this);
        connect(pWorker, &QOperateThread::SigBeginThread, this, &MainWidget::onBeginThread);
        connect(pWorker, &QOperateThread::SigEndThread, this, &MainWidget::onEndThread);
        connect(pWorker, &QOperateThread::SigThreadInfo, this, &MainWidget::onThreadInfo);
    }
    return pWorker;
}

// The device left. An idle worker goes at once. A running one cannot be deleted without ending the program
// and every other camera's job with it: it goes by itself when its job is over, and the window counts that
// job as failed now.
void MainWidget::LetWorkerGo(int nDeviceID)
{
    QOperateThread* pWorker = m_mapThreads.take(nDeviceID);
    if (!pWorker)
        return;
    if (pWorker->isRunning()) {
        pWorker->disconnect(this);
        pWorker->setParent(nullptr);
        connect(pWorker, &QThread::finished, pWorker, &QObject::deleteLater);
        if (pWorker->isFinished()) // between the question and the connection
            pWorker->deleteLater();
    } else {
        delete pWorker;
    }
    const bool bLaunched = m_setLaunched.remove(nDeviceID);
    const bool bBegun = m_setBegun.remove(nDeviceID);
    if (!bLaunched && !bBegun)
        return;
    if (bBegun)
        CountRunning(-1);
    CountEnd(false);
    if (m_nRunningNum == 0 && m_setLaunched.isEmpty()) {
        setEnabled(true);
        m_pLoadingDlg->close();
    }
}

void MainWidget::SetOperationStatus(int nRow, const QString& strText, const QBrush& color)
{
    QTableWidgetItem* pItem = m_pTableWidget->item(nRow, kStatusColumn);
    pItem->setText(strText);
    pItem->setForeground(color);
}

void MainWidget::CountRunning(int nChange)
{
    m_nRunningNum += nChange;
    m_pRunningNumLabel->setText(QString::number(m_nRunningNum));
}

void MainWidget::CountEnd(bool bSuccess)
{
    int& nCount = bSuccess ? m_nSuccessNum : m_nFailedNum;
    (bSuccess ? m_pSuccessNumLabel : m_pFailedNumLabel)->setText(QString::number(++nCount));
}

void MainWidget::onBeginThread(long lCamerID, unsigned int nThreadType)
{
    const int nRow = FindDeviceRow(lCamerID);
    if (nRow < 0)
        return;
    m_setLaunched.remove(int(lCamerID));
    m_setBegun.insert(int(lCamerID));
    m_bHaveSuccess = false;
    CountRunning(+1);
    m_pTableWidget->item(nRow, kStatusColumn)->setData(kSuccessRole, true);
    const QString strText = isImport(nThreadType)   ? tr("Start importing...")
                            : isExport(nThreadType) ? tr("Start exporting...")
                                                    : QString();
    SetOperationStatus(nRow, strText, neutralBrush());
}

void MainWidget::onThreadInfo(long nDeviceID, QString strMsg, bool bFailed)
{
    const int nRow = FindDeviceRow(nDeviceID);
    if (nRow < 0)
        return;
    m_pTableWidget->item(nRow, kStatusColumn)->setData(kSuccessRole, !bFailed);
    if (!bFailed) {
        SetOperationStatus(nRow, strMsg, neutralBrush());
        return;
    }
    SetOperationStatus(nRow, QString(strMsg).remove("\r\n"), QBrush(Qt::red));
    m_pTableWidget->setDetailTip(nRow, kStatusColumn, tr("The Reasons of Failure :") + "\r\n" + strMsg);
}

void MainWidget::onEndThread(long lCameraID, unsigned int nThreadType, QString strFilePath)
{
    const int nRow = FindDeviceRow(lCameraID);
    if (nRow < 0)
        return;
    m_setBegun.remove(int(lCameraID));
    if (m_nRunningNum == 1)
        setEnabled(true);
    CountRunning(-1);
    const bool bSuccess = m_pTableWidget->item(nRow, kStatusColumn)->data(kSuccessRole).toBool();
    if (bSuccess) {
        m_bHaveSuccess = true;
        const QString strText = isImport(nThreadType)   ? tr("Imported.")
                                : isExport(nThreadType) ? tr("Exported.")
                                                        : QString();
        SetOperationStatus(nRow, strText, neutralBrush());
    }
    CountEnd(bSuccess);
    if (m_nRunningNum == 0)
        FinishBatch(nThreadType, strFilePath);
}

void MainWidget::FinishBatch(unsigned int nThreadType, const QString& strFilePath)
{
    m_pLoadingDlg->close();
    if (!m_bHaveSuccess)
        return;
    if (isImport(nThreadType)) {
        ORBCustomMessageBox::simple(this, tr("Importing process is over."), "", "", 0, false);
    } else if (isExport(nThreadType)) {
        ORBCustomSaveDoneHintDlg dialog(this, "", "");
        dialog.SetMsgText(tr("Exporting process is over."), QDir::toNativeSeparators(strFilePath), false);
        dialog.exec();
    }
}
