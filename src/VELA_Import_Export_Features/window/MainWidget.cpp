// Set-up, layout, texts and events of the window.
#include "window/MainWidget.h"

#include "jobs/worker/QOperateThread.h"
#include "window/DeviceColumns.h"
#include "window/ImportExportFeaturesSelectedWidget.h"
#include "window/LocalConfig.h"
#include "window/Translations.h"
#include "window/WindowOperation.h"

#include <DevListMgr/VELADeviceTree.h>
#include <StyledCtl/ORBCustomCheckHeaderView.h>
#include <StyledCtl/ORBCustomLabel.h>
#include <StyledCtl/ORBCustomLineWidget.h>
#include <StyledCtl/ORBCustomLoadingDialog.h>
#include <StyledCtl/ORBCustomMessageBox.h>
#include <StyledCtl/ORBCustomPushButton.h>
#include <StyledCtl/ORBCustomSortHeaderView.h>
#include <StyledCtl/ORBCustomTableWidget.h>
#include <StyledCtl/ORBCustomTitleBar.h>
#include <SuiteTools/SuiteTools.h>
#include <SuiteTools/SuiteToolsWidgets.h>

#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QScreen>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace
{

constexpr int kStretchEdges = 203;
constexpr char kButtonBorder[] = "#D0DF00";

ORBCustomLabel* newCount(QWidget* parent, const char* color)
{
    ORBCustomLabel* pLabel = new ORBCustomLabel(parent);
    QFont font = pLabel->font();
    font.setPixelSize(32);
    font.setWeight(QFont::Bold);
    font.setItalic(true);
    pLabel->cSetFont(font);
    pLabel->cSetFontColor(color);
    pLabel->setAlignment(Qt::AlignCenter);
    pLabel->setFixedWidth(50);
    pLabel->setText("0");
    return pLabel;
}

ORBCustomLabel* newCaption(QWidget* parent)
{
    ORBCustomLabel* pLabel = new ORBCustomLabel(parent);
    pLabel->cSetFontColor("#6C6C6C");
    pLabel->cSetFontSize(12);
    return pLabel;
}

ORBCustomPushButton* newButton(QWidget* parent, const char* name, const QSize& size)
{
    ORBCustomPushButton* pButton = new ORBCustomPushButton(parent, 0);
    pButton->setObjectName(name);
    pButton->setFixedSize(size);
    pButton->cSetControlClickEvent(true); // the window hangs on its clicks, whatever the library starts with
    return pButton;
}

void addSeparator(QHBoxLayout* pLayout, QWidget* parent)
{
    ORBCustomLineWidget* pLine = new ORBCustomLineWidget(parent);
    pLine->cSetLineType(0);
    pLine->setFixedSize(1, 20);
    pLine->cSetBackgroundColor("#BFBFBF");
    pLayout->addSpacing(20);
    pLayout->addWidget(pLine);
    pLayout->addSpacing(20);
}

} // namespace

MainWidget::MainWidget(QWidget* parent) : ORBCustomMainWindow(parent)
{
    cSetBackgroundColor("#F2F3F5");
    cSetStrechEdges(kStretchEdges);
    cEnableDefualtShadow();
    SetTitleBar();
    resize(1058, 632);
    setMinimumWidth(1058);
    BuildWidgets();
    if (ConnectWidgets())
        BuildLayout();
    else
        qCritical("The window's widgets could not be connected.");
    m_nSupportNum = VELAInterface::toolsSupportNum();
    m_pImportBtn->setEnabled(false);
    m_pExportBtn->setEnabled(false);
    ApplyEncodingType();
}

MainWidget::~MainWidget()
{
    // A worker that still runs is left to the end of the process: deleting it would abort the program.
    for (QOperateThread* pWorker : qAsConst(m_mapThreads))
        if (pWorker->isRunning())
            pWorker->setParent(nullptr);
}

void MainWidget::SetTitleBar()
{
    cTitleBar()->cSetTitleText(
        QString("%1 %2").arg(tr("Import/Export Features"), VELAInterface::curExeVersion()));
    cTitleBar()->cSetTitleControls(cTitleBar()->cTitleControls());
    cTitleBar()->cSetTitleIcon(":/VELA/AppIcon/FeatureBag.png");
    cTitleBar()->setFixedHeight(37);
    setWindowTitle(
        tr("Import/Export Features")); // without the version: a second start searches for this text
}

void MainWidget::BuildWidgets()
{
    m_pTableWidget = new ORBCustomTableWidget(this);
    m_pDeviceTree = new VELADeviceTree(this);
    BuildButtons();
    m_pLoadingDlg = new ORBCustomLoadingDialog(this);
    BuildCounters();
    m_pTopStack = new QStackedWidget(this);
    m_pColumnChooser = new ImportExportFeaturesSelectedWidget(this);
    m_pColumnChooser->hide();
    SetTexts();
    SetUpTable();
    SetUpTree();
    ApplyColumnFlags();
    StretchLastVisibleColumn();
}

void MainWidget::BuildButtons()
{
    m_pImportBtn = newButton(this, "ImportBtn", {70, 26});
    m_pExportBtn = newButton(this, "ExportBtn", {70, 26});
    m_pCheckListBtn = newButton(this, "CheckListBtn", {28, 26});
    m_pBackBtn = newButton(this, "BackBtn", {86, 26});
    for (ORBCustomPushButton* pButton : {m_pImportBtn, m_pExportBtn, m_pCheckListBtn})
        pButton->cSetBorderColor(kButtonBorder, ORBCustom::BorderAll, ORBCustom::StatusNormal);
    m_pCheckListBtn->cSetBackgroundImage(":/VELA/btn/ic_more_normal.png", ORBCustom::StatusNormal);
    m_pCheckListBtn->cSetBackgroundImage(":/VELA/btn/ic_more_click.png", ORBCustom::StatusHover);
    m_pCheckListBtn->cSetBackgroundImage(":/VELA/btn/ic_more_click.png", ORBCustom::StatusPressed);
    m_pCheckListBtn->cSetBackgroundImage(":/VELA/btn/ic_more_disable.png", ORBCustom::StatusDisabled);
}

void MainWidget::BuildCounters()
{
    m_pRunningNumLabel = newCount(this, "#FAB700");
    m_pRunningTextLabel = newCaption(this);
    m_pSuccessNumLabel = newCount(this, "#00D53C");
    m_pSuccessTextLabel = newCaption(this);
    m_pFailedNumLabel = newCount(this, "#FC2F2F");
    m_pFailedTextLabel = newCaption(this);
}

bool MainWidget::ConnectWidgets()
{
    return connect(m_pImportBtn, &QAbstractButton::clicked, this, &MainWidget::OnBtnImport) &&
           connect(m_pExportBtn, &QAbstractButton::clicked, this, &MainWidget::OnBtnExport) &&
           connect(m_pTableWidget, &ORBCustomTableWidget::SigCellCheckStateChanged, this,
                   &MainWidget::onCellCheckStateChanged) &&
           connect(Header(), &ORBCustomCheckHeaderView::SigCheckStateChange, this,
                   &MainWidget::onHeaderCheckStateChanged) &&
           connect(Header(), &ORBCustomSortHeaderView::SigSortByColumn, this,
                   &MainWidget::onSortTableWidget) &&
           connect(m_pDeviceTree, &VELADeviceTree::sigNewDeviceItem, this, &MainWidget::onNewDevice) &&
           connect(m_pDeviceTree, &VELADeviceTree::sigUpdateDeviceItem, this, &MainWidget::onUpdateDevice) &&
           connect(m_pDeviceTree, &VELADeviceTree::sigDeleteDeviceItem, this, &MainWidget::onDeleteDevice) &&
           connect(m_pDeviceTree, &QTreeWidget::itemSelectionChanged, this,
                   &MainWidget::OnTreeSelectesChanged) &&
           connect(m_pBackBtn, &QAbstractButton::clicked, this, &MainWidget::onBackClicked) &&
           connect(m_pCheckListBtn, &QAbstractButton::clicked, this, &MainWidget::OnCheckListBtn) &&
           connect(m_pColumnChooser, &ImportExportFeaturesSelectedWidget::SigItemToggled, this,
                   &MainWidget::OnSelectedChecked);
}

void MainWidget::BuildLayout()
{
    QWidget* pCentral = new QWidget(this);
    m_pMainLayout = new QVBoxLayout(pCentral);
    m_pMainLayout->setContentsMargins(25, 0, 25, 20);
    m_pMainLayout->setSpacing(0);

    m_pButtonPage = BuildButtonPage();
    m_pProgressPage = BuildProgressPage();
    m_pTopStack->setFixedHeight(57);
    m_pTopStack->addWidget(m_pButtonPage);
    m_pTopStack->addWidget(m_pProgressPage);
    m_pTopStack->setCurrentWidget(m_pButtonPage);
    m_pMainLayout->addWidget(m_pTopStack);

    QHBoxLayout* pRow = new QHBoxLayout;
    pRow->setContentsMargins(0, 0, 0, 0);
    pRow->setSpacing(0);
    pRow->addWidget(m_pDeviceTree);
    pRow->addWidget(m_pTableWidget);
    m_pMainLayout->addLayout(pRow);
    cSetCentralWidget(pCentral);
}

QWidget* MainWidget::BuildButtonPage()
{
    QWidget* pPage = new QWidget(m_pTopStack);
    m_pBtnLayout = new QHBoxLayout(pPage);
    m_pBtnLayout->setContentsMargins(0, 0, 0, 0);
    m_pBtnLayout->setSpacing(0);
    m_pBtnLayout->addWidget(m_pImportBtn);
    m_pBtnLayout->addSpacing(10);
    m_pBtnLayout->addWidget(m_pExportBtn);
    m_pBtnLayout->addStretch();
    m_pBtnLayout->addWidget(m_pCheckListBtn);
    return pPage;
}

QWidget* MainWidget::BuildProgressPage()
{
    QWidget* pPage = new QWidget(m_pTopStack);
    QHBoxLayout* pLayout = new QHBoxLayout(pPage);
    pLayout->setContentsMargins(0, 0, 0, 0);
    pLayout->setSpacing(0);
    pLayout->addWidget(m_pRunningNumLabel);
    pLayout->addWidget(m_pRunningTextLabel);
    addSeparator(pLayout, pPage);
    pLayout->addWidget(m_pSuccessNumLabel);
    pLayout->addWidget(m_pSuccessTextLabel);
    addSeparator(pLayout, pPage);
    pLayout->addWidget(m_pFailedNumLabel);
    pLayout->addWidget(m_pFailedTextLabel);
    pLayout->addStretch();
    pLayout->addWidget(m_pBackBtn);
    return pPage;
}

void MainWidget::SetTexts()
{
    m_pImportBtn->setText(tr("Import"));
    m_pExportBtn->setText(tr("Export"));
    m_pBackBtn->setText(tr("Back"));
    m_pFailedTextLabel->setText(tr("Failed"));
    SetBatchCaptions(m_nOperateType);
    m_pTableWidget->setColumnCount(ColumnCount);
    m_pTableWidget->setHorizontalHeaderLabels({"", tr("PortID"), tr("Model Name"), tr("Device User ID"),
                                               tr("Serial Number"), tr("Interface Type"), tr("MAC Address"),
                                               tr("Status"), tr("Operation Status")});
}

// The captions begin with a blank on purpose: they follow the count.
void MainWidget::SetBatchCaptions(int nOperateType)
{
    if (nOperateType == OPERATION_IMPORT) {
        m_pRunningTextLabel->setText(tr(" Importing"));
        m_pSuccessTextLabel->setText(tr(" Imported."));
    } else if (nOperateType == OPERATION_EXPORT) {
        m_pRunningTextLabel->setText(tr(" Exporting"));
        m_pSuccessTextLabel->setText(tr(" Exported."));
    }
}

void MainWidget::ApplyEncodingType()
{
    VELAInterface::SetEncodingType(
        static_cast<VELAInterface::_ENCODING_TYPE_>(LocalConfig::encodingType(this)));
}

void MainWidget::OnBtnRefresh() {}

void MainWidget::OnEndRefresh()
{
    onCellCheckStateChanged(0, 0);
}

void MainWidget::OnShowMsg(QString strTitle, QString strContent, QString strDetail)
{
    if (strTitle.isEmpty())
        strTitle = tr("Prompt");
    ORBCustomMessageBox::simple(this, strContent, strDetail, strTitle, 0, false);
}

void MainWidget::onBackClicked()
{
    m_pTopStack->setCurrentWidget(m_pButtonPage);
}

void MainWidget::OnCheckListBtn()
{
    if (!m_pColumnChooser->isHidden()) {
        m_pColumnChooser->hide();
        return;
    }
    // The suite's language decides, not the one that is shown.
    const QString strLanguage = VELAInterface::language();
    if (strLanguage == "ENG")
        m_pColumnChooser->resize(176, m_pColumnChooser->height());
    else if (strLanguage == "CH")
        m_pColumnChooser->resize(134, m_pColumnChooser->height());
    const QRect button = m_pCheckListBtn->rect();
    QPoint position = m_pCheckListBtn->mapToGlobal(button.bottomLeft()) + QPoint(0, 2);
    if (position.x() + m_pColumnChooser->width() > QGuiApplication::primaryScreen()->size().width())
        position.setX(m_pCheckListBtn->mapToGlobal(button.bottomRight()).x() - m_pColumnChooser->width());
    m_pColumnChooser->move(position);
    m_pColumnChooser->cPopup();
}

void MainWidget::OnSelectedChecked(int nIndex, bool bChecked)
{
    if (!m_pTableWidget)
        return;
    if (nIndex >= 0 && nIndex < LocalConfig::kColumnBits) {
        m_pTableWidget->setColumnHidden(LocalConfig::kColumnOfBit[nIndex], !bChecked);
    } else if (nIndex == ImportExportFeaturesSelectedWidget::kAllBox) {
        for (const DeviceColumn nColumn : LocalConfig::kColumnOfBit)
            m_pTableWidget->setColumnHidden(nColumn,
                                            !bChecked || (nColumn == ColumnPortId && !IsPortIdAllowed()));
    }
    StretchLastVisibleColumn();
    SetColumnWidths();
    Header()->setDefaultAlignment(Qt::AlignCenter);
    Header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter); // this one stands
}

void MainWidget::changeEvent(QEvent* pEvent)
{
    if (pEvent->type() == QEvent::LanguageChange && m_pColumnChooser) {
        SetTitleBar();
        SetTexts();
        SetStatusWords();
        ClearOperationStatus();
        if (isImport(unsigned(m_nOperateType)))
            m_pLoadingDlg->SetLabelText(tr("Importing features..."));
        else if (isExport(unsigned(m_nOperateType)))
            m_pLoadingDlg->SetLabelText(tr("Exporting features..."));
    }
    ORBCustomMainWindow::changeEvent(pEvent);
}

void MainWidget::closeEvent(QCloseEvent* pEvent)
{
    const auto isRunning = [](const QOperateThread* pWorker) { return pWorker->isRunning(); };
    if (m_nRunningNum >= 1 && std::any_of(m_mapThreads.cbegin(), m_mapThreads.cend(), isRunning))
        pEvent->ignore();
    else
        ORBCustomMainWindow::closeEvent(pEvent);
}

void MainWidget::customEvent(QEvent* pEvent)
{
    if (pEvent->type() == VELAInterface::LanguageChangedEvent)
        LoadTranslations(VELAInterface::language());
    pEvent->accept();
}
