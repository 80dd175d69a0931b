// Opens the window's inside to tests: its fields as references.
#pragma once

#include "jobs/worker/QOperateThread.h"
#include "window/ImportExportFeaturesSelectedWidget.h"
#include "window/MainWidget.h"

#include <DevListMgr/VELADeviceTree.h>
#include <StyledCtl/ORBCustomCheckBox.h>
#include <StyledCtl/ORBCustomCheckHeaderView.h>
#include <StyledCtl/ORBCustomLabel.h>
#include <StyledCtl/ORBCustomLineWidget.h>
#include <StyledCtl/ORBCustomLoadingDialog.h>
#include <StyledCtl/ORBCustomMessageBox.h>
#include <StyledCtl/ORBCustomPushButton.h>
#include <StyledCtl/ORBCustomSaveDoneHintDlg.h>
#include <StyledCtl/ORBCustomSortHeaderView.h>
#include <StyledCtl/ORBCustomTableWidget.h>
#include <StyledCtl/ORBCustomTitleBar.h>

#include <QHBoxLayout>
#include <QStackedWidget>
#include <QVBoxLayout>

class MainWidgetProbe
{
public:
    explicit MainWidgetProbe(MainWidget& window)
        : haveSuccess(window.m_bHaveSuccess), running(window.m_nRunningNum), succeeded(window.m_nSuccessNum),
          failed(window.m_nFailedNum), operateType(window.m_nOperateType), tree(window.m_pDeviceTree),
          table(window.m_pTableWidget), buttonLayout(window.m_pBtnLayout), importButton(window.m_pImportBtn),
          exportButton(window.m_pExportBtn), loading(window.m_pLoadingDlg), mainLayout(window.m_pMainLayout),
          workers(window.m_mapThreads), supportNum(window.m_nSupportNum), lastPath(window.m_strLastPath),
          runningLabel(window.m_pRunningNumLabel), runningText(window.m_pRunningTextLabel),
          successLabel(window.m_pSuccessNumLabel), successText(window.m_pSuccessTextLabel),
          failedLabel(window.m_pFailedNumLabel), failedText(window.m_pFailedTextLabel),
          progressPage(window.m_pProgressPage), buttonPage(window.m_pButtonPage), stack(window.m_pTopStack),
          backButton(window.m_pBackBtn), checkListButton(window.m_pCheckListBtn),
          chooser(window.m_pColumnChooser), m_window(window)
    {}

    bool& haveSuccess;
    int &running, &succeeded, &failed, &operateType;
    VELADeviceTree*& tree;
    ORBCustomTableWidget*& table;
    QHBoxLayout*& buttonLayout;
    ORBCustomPushButton *&importButton, *&exportButton;
    ORBCustomLoadingDialog*& loading;
    QVBoxLayout*& mainLayout;
    QMap<int, QOperateThread*>& workers;
    unsigned int& supportNum;
    QString& lastPath;
    ORBCustomLabel *&runningLabel, *&runningText, *&successLabel, *&successText, *&failedLabel, *&failedText;
    QWidget *&progressPage, *&buttonPage;
    QStackedWidget*& stack;
    ORBCustomPushButton *&backButton, *&checkListButton;
    ImportExportFeaturesSelectedWidget*& chooser;

    ORBCustomCheckHeaderView& header() const
    {
        return *static_cast<ORBCustomCheckHeaderView*>(table->horizontalHeader());
    }
    // The chooser's boxes are its only check boxes, in the order of their ids.
    ORBCustomCheckBox& box(int id) const { return *chooser->findChildren<ORBCustomCheckBox*>().at(id); }
    int findRow(long id) const { return m_window.FindDeviceRow(id); }
    QOperateThread* workerOf(int id) const { return m_window.WorkerOf(id); }
    QStringList counts() const { return {runningLabel->text(), successLabel->text(), failedLabel->text()}; }

private:
    MainWidget& m_window;
};
