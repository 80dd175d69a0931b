// Imports and exports of all ticked devices: start, progress, end.
#include "window/MainWidget.h"

#include "jobs/worker/QOperateThread.h"
#include "window/DeviceColumns.h"
#include "window/TaskbarProgress.h"
#include "window/WindowOperation.h"

#include <DevListMgr/VELADeviceTree.h>
#include <StyledCtl/ExistingDirectory.h>
#include <StyledCtl/ORBCustomLabel.h>
#include <StyledCtl/ORBCustomLoadingDialog.h>
#include <StyledCtl/ORBCustomMessageBox.h>
#include <StyledCtl/ORBCustomSaveDoneHintDlg.h>
#include <StyledCtl/ORBCustomTableWidget.h>
#include <SuiteTools/SuiteTools.h>
#include <SuiteTools/SuiteToolsWidgets.h>

#include <QBrush>
#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QStackedWidget>

#include <algorithm>

namespace
{

// What a worker needs from its end signal until its thread is over is next to nothing; one that takes longer
// is not waited for.
constexpr unsigned long kWayOutMs = 200;

QBrush neutralBrush()
{
    return QBrush(QColor("#555555"));
}

// The object goes by itself when its thread is over, and tells nobody any more. Always by way of the event
// queue, behind the signals that it has sent: until they are handled no new worker can have its address.
void letGo(QOperateThread* pWorker, QObject* pReceiver)
{
    pWorker->disconnect(pReceiver);
    pWorker->setParent(nullptr);
    QObject::connect(pWorker, &QThread::finished, pWorker, &QObject::deleteLater);
    if (!pWorker->isRunning()) // perhaps since before the connection
        pWorker->deleteLater();
}

} // namespace

void MainWidget::OnBtnImport()
{
    const QString strStart = m_strLastPath.isEmpty() ? VELAInterface::userDataPath() : m_strLastPath;
    const QString strFile =
        VELAInterface::getOpenFileName(this, tr("Select Import File"), strStart, tr("Import File(*.fpk)"));
    SetBatchCaptions(OPERATION_IMPORT);
    if (strFile.isEmpty())
        return;
    StartBatch(OPERATION_IMPORT, strFile);
    m_strLastPath = strFile;
}

void MainWidget::OnBtnExport()
{
    const QString strStart = m_strLastPath.isEmpty() ? VELAInterface::userDataPath() : m_strLastPath;
    const QString strFolder =
        ORBCustom::getExistingDirectory(this, tr("Export Features"), strStart, QFileDialog::ShowDirsOnly);
    SetBatchCaptions(OPERATION_EXPORT);
    if (strFolder.isEmpty())
        return;
    StartBatch(OPERATION_EXPORT, strFolder);
    m_strLastPath = strFolder;
}

void MainWidget::StartBatch(int nOperateType, const QString& strPath)
{
    ClearOperationStatus();
    const QList<StructDeviceInfo> lstDevices = TickedDevices();
    if (lstDevices.isEmpty())
        return;
    setEnabled(false);
    ClearCounts();
    m_pTopStack->setCurrentWidget(m_pProgressPage);
    ++m_nBatch;
    m_nBatchJobs = lstDevices.size();
    ShowTaskbarProgress(this, 0, m_nBatchJobs, false);
    for (const StructDeviceInfo& stDevice : lstDevices) {
        QOperateThread* pWorker = WorkerOf(stDevice.nDeviceID);
        if (isImport(nOperateType))
            pWorker->SetXmlImportJob(stDevice, strPath);
        else
            pWorker->SetXmlExportJob(stDevice, strPath);
        m_mapJobs.insert(stDevice.nDeviceID, {m_nBatch, false});
        pWorker->Launch();
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
        const QTableWidgetItem* pItem = m_pTableWidget->item(nRow, ColumnCheck);
        if (!pItem)
            break;
        const QTreeWidgetItem* pCamera = m_pDeviceTree->findCameraItem(pItem->data(DeviceIdRole).toInt());
        if (pCamera && m_pTableWidget->cellCheckState(nRow, ColumnCheck) == Qt::Checked)
            lstDevices.append(pCamera->data(0, VELADeviceTree::RoleDevice).value<StructDeviceInfo>());
    }
    return lstDevices;
}

// A worker whose last job has not ended for the window is busy with an earlier batch: it is let go, and a new
// one takes its place. Its signals are then nobody's.
QOperateThread* MainWidget::WorkerOf(int nDeviceID)
{
    QOperateThread*& pWorker = m_mapThreads[nDeviceID];
    if (pWorker && (m_mapJobs.contains(nDeviceID) || !pWorker->wait(kWayOutMs))) {
        letGo(pWorker, this);
        pWorker = nullptr;
    }
    if (pWorker)
        return pWorker;
    QOperateThread* pNew = new QOperateThread(this);
    // Signals that wait in the event queue outlive a disconnection.
    const auto isCurrent = [this, pNew](long nID) { return m_mapThreads.value(int(nID)) == pNew; };
    connect(pNew, &QOperateThread::SigBeginThread, this,
            [this, isCurrent](long nID, unsigned int nThreadType) {
                if (isCurrent(nID))
                    onBeginThread(nID, nThreadType);
            });
    connect(pNew, &QOperateThread::SigEndThread, this,
            [this, isCurrent](long nID, unsigned int nThreadType, const QString& strFilePath) {
                if (isCurrent(nID))
                    onEndThread(nID, nThreadType, strFilePath);
            });
    connect(pNew, &QOperateThread::SigThreadInfo, this,
            [this, isCurrent](long nID, const QString& strMsg, bool bFailed) {
                if (isCurrent(nID))
                    onThreadInfo(nID, strMsg, bFailed);
            });
    return pWorker = pNew;
}

// A worker that is over has said all it had to say: its job keeps its outcome though its camera leaves.
void MainWidget::TakeLastSignals(int nDeviceID)
{
    const QOperateThread* pWorker = m_mapThreads.value(nDeviceID);
    if (pWorker && pWorker->isFinished() && m_mapJobs.contains(nDeviceID))
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

// An idle worker goes at once. A running one cannot be deleted without ending the program and every other
// camera's job with it: it is let go, and its job has failed.
void MainWidget::DeviceLeaves(int nDeviceID, const QString& strName)
{
    QOperateThread* pWorker = m_mapThreads.take(nDeviceID);
    if (pWorker && (pWorker->isRunning() || m_mapJobs.contains(nDeviceID)))
        letGo(pWorker, this);
    else
        delete pWorker;
    if (!m_mapJobs.contains(nDeviceID))
        return;
    if (!IsOfEarlierBatch(nDeviceID))
        NoteLostJob(strName);
    EndJob(TakeJob(nDeviceID), false);
}

// The row that could have told of it is gone.
void MainWidget::NoteLostJob(const QString& strName)
{
    qCritical().noquote() << QString("Device %1 left during its job.").arg(strName);
    m_lstLost << strName;
    m_pFailedNumLabel->setToolTip(tr("Left during their jobs :") + "\n" + m_lstLost.join('\n'));
}

void MainWidget::SetOperationStatus(int nRow, const QString& strText, const QBrush& color)
{
    QTableWidgetItem* pItem = m_pTableWidget->item(nRow, ColumnOperation);
    pItem->setText(strText);
    pItem->setForeground(color);
}

void MainWidget::ClearCounts()
{
    m_nRunningNum = m_nSuccessNum = m_nFailedNum = 0;
    for (ORBCustomLabel* pLabel : {m_pRunningNumLabel, m_pSuccessNumLabel, m_pFailedNumLabel})
        pLabel->setText("0");
    m_lstLost.clear();
    m_pFailedNumLabel->setToolTip("");
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
    ShowTaskbarProgress(this, m_nSuccessNum + m_nFailedNum, m_nBatchJobs, m_nFailedNum > 0);
}

void MainWidget::onBeginThread(long lCamerID, unsigned int nThreadType)
{
    const int nRow = FindDeviceRow(lCamerID);
    if (nRow < 0)
        return;
    const auto job = m_mapJobs.find(int(lCamerID));
    if (job != m_mapJobs.end())
        job->bBegun = true;
    if (!IsOfEarlierBatch(int(lCamerID))) {
        m_bHaveSuccess = false;
        CountRunning(+1);
    }
    m_pTableWidget->item(nRow, ColumnOperation)->setData(SuccessRole, true);
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
    m_pTableWidget->item(nRow, ColumnOperation)->setData(SuccessRole, !bFailed);
    if (!bFailed) {
        SetOperationStatus(nRow, strMsg, neutralBrush());
        return;
    }
    SetOperationStatus(nRow, QString(strMsg).remove("\r\n"), QBrush(Qt::red));
    m_pTableWidget->setDetailTip(nRow, ColumnOperation, tr("The Reasons of Failure :") + "\r\n" + strMsg);
}

void MainWidget::onEndThread(long lCameraID, unsigned int nThreadType, QString strFilePath)
{
    const int nRow = FindDeviceRow(lCameraID);
    if (nRow < 0)
        return;
    if (!IsOfEarlierBatch(int(lCameraID))) {
        m_nLastType = nThreadType;
        m_strLastFile = strFilePath;
    }
    const Job job = TakeJob(int(lCameraID));
    const bool bSuccess = m_pTableWidget->item(nRow, ColumnOperation)->data(SuccessRole).toBool();
    if (bSuccess) {
        const QString strText = isImport(nThreadType)   ? tr("Imported.")
                                : isExport(nThreadType) ? tr("Exported.")
                                                        : QString();
        SetOperationStatus(nRow, strText, neutralBrush());
    }
    EndJob(job, bSuccess);
}

// Of this batch, launched or begun.
bool MainWidget::HasJobs() const
{
    return std::any_of(m_mapJobs.cbegin(), m_mapJobs.cend(),
                       [this](const Job& job) { return job.nBatch == m_nBatch; });
}

bool MainWidget::IsOfEarlierBatch(int nDeviceID) const
{
    const auto job = m_mapJobs.find(nDeviceID);
    return job != m_mapJobs.end() && job->nBatch != m_nBatch;
}

// From here on the job counts no more as running; its row is told after that.
MainWidget::Job MainWidget::TakeJob(int nDeviceID)
{
    const Job job = m_mapJobs.value(nDeviceID, {m_nBatch, true});
    m_mapJobs.remove(nDeviceID);
    if (job.nBatch == m_nBatch && job.bBegun) {
        if (m_nRunningNum == 1)
            setEnabled(true);
        CountRunning(-1);
    }
    return job;
}

// The one ending, whether the worker told of it or its camera left. The batch is over whenever the running
// count returns to 0; jobs that have begun by then are all that counts. Meant.
void MainWidget::EndJob(const Job& job, bool bSuccess)
{
    if (job.nBatch != m_nBatch)
        return;
    m_bHaveSuccess = m_bHaveSuccess || bSuccess;
    CountEnd(bSuccess);
    if (job.bBegun && m_nRunningNum == 0)
        FinishBatch();
    else if (!job.bBegun && m_nRunningNum == 0 && !HasJobs()) {
        // Its camera left before it began, and nobody else will end the batch.
        setEnabled(true);
        EndTaskbarProgress(this);
        m_pLoadingDlg->close();
    }
}

void MainWidget::FinishBatch()
{
    EndTaskbarProgress(this);
    m_pLoadingDlg->close();
    if (!m_bHaveSuccess)
        return;
    if (isImport(m_nLastType)) {
        ORBCustomMessageBox::simple(this, tr("Importing process is over."), "", "", 0, false);
    } else if (isExport(m_nLastType)) {
        ORBCustomSaveDoneHintDlg dialog(this, "", "");
        dialog.SetMsgText(tr("Exporting process is over."), QDir::toNativeSeparators(m_strLastFile), false);
        dialog.exec();
    }
}
