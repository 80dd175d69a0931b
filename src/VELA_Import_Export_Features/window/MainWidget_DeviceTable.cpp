// The device table: its set-up, its rows, who is shown and who is ticked.
#include "window/MainWidget.h"

#include "camera_line/RecordTexts.h"
#include "jobs/worker/QOperateThread.h"
#include "window/DeviceColumns.h"
#include "window/ImportExportFeaturesSelectedWidget.h"
#include "window/LocalConfig.h"

#include <DevListMgr/VELADeviceTree.h>
#include <StyledCtl/ORBCustomCheckHeaderView.h>
#include <StyledCtl/ORBCustomPushButton.h>
#include <StyledCtl/ORBCustomTableWidget.h>
#include <SuiteTools/SuiteTools.h>

#include <QIcon>

namespace
{

constexpr int kMinimumRows = 10;
constexpr int kRowHeight = 38;

struct StatusLook
{
    int code;
    const char* icon;
    bool free;
};

// The icon of the state "in use" is the one named "notuse", that of "free" the one named "use". Meant.
StatusLook lookOf(int nStatus)
{
    switch (nStatus) {
    case 2:
    case 4:
    case 9:
    case 14:
        return {3, ":/VELA/State/notuse.png", false};
    case 1:
    case 8:
    case 13:
    case 18:
        return {1, ":/VELA/State/use.png", true};
    default:
        return {2, ":/VELA/State/notreach.png", false};
    }
}

StructDeviceInfo deviceOf(const QTreeWidgetItem* pItem)
{
    return pItem->data(0, VELADeviceTree::RoleDevice).value<StructDeviceInfo>();
}

QString interfaceOf(const QTreeWidgetItem* pItem)
{
    return pItem->parent() ? pItem->parent()->text(0) : QString();
}

} // namespace

void MainWidget::SetUpTable()
{
    ORBCustomCheckHeaderView* pHeader = new ORBCustomCheckHeaderView(m_pTableWidget);
    m_pTableWidget->setHorizontalHeader(pHeader);
    pHeader->setCheckBoxVisible(ColumnCheck, true);
    pHeader->setFixedHeight(32);
    m_pTableWidget->connetSectionResized(true);
    m_pTableWidget->setShowGrid(true);
    m_pTableWidget->setAlternatingRowColors(true);

    m_pTableWidget->setColumnCount(ColumnCount);
    m_pTableWidget->setColumnWidth(ColumnCheck, 38);
    SetColumnWidths();
    m_pTableWidget->setIconSize({34, 34});
    pHeader->setSectionResizeMode(ColumnOperation, QHeaderView::Stretch);
    pHeader->setSectionResizeMode(ColumnCheck, QHeaderView::Fixed);
    pHeader->setSectionResizeMode(ColumnStatus, QHeaderView::Fixed);
    m_pTableWidget->setColumnHidden(ColumnPortId, false);
    m_pTableWidget->setColumnHidden(ColumnInterface, true);
    pHeader->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    for (int nColumn = ColumnPortId; nColumn <= ColumnOperation; ++nColumn)
        pHeader->enableSort(nColumn, true);

    SetTexts();
    m_pTableWidget->setRowCount(kMinimumRows);
    for (int nRow = 0; nRow < kMinimumRows; ++nRow)
        m_pTableWidget->setRowHeight(nRow, kRowHeight);
}

void MainWidget::SetUpTree()
{
    m_pDeviceTree->setVisibleItemTypes({3, 4, 1, 5, 14, 13});
    m_pDeviceTree->updateDeviceTypes(5, true);
    m_pDeviceTree->setProperty("styleKey", "ToolTree");
    m_pDeviceTree->setFixedWidth(186);
    m_pDeviceTree->setItemsExpandable(false);
    m_pDeviceTree->setCurrentItem(m_pDeviceTree->findItem(VELADeviceTree::NodeAllDevices, -1));
}

ORBCustomCheckHeaderView* MainWidget::Header() const
{
    return static_cast<ORBCustomCheckHeaderView*>(m_pTableWidget->horizontalHeader());
}

void MainWidget::SetColumnWidths()
{
    static const QMap<int, int> widths = {{ColumnPortId, 130},   {ColumnModel, 170}, {ColumnUserName, 130},
                                          {ColumnSerial, 162},   {ColumnMac, 137},   {ColumnStatus, 54},
                                          {ColumnOperation, 131}};
    for (auto it = widths.cbegin(); it != widths.cend(); ++it)
        m_pTableWidget->setColumnWidth(it.key(), it.value());
}

void MainWidget::ApplyColumnFlags()
{
    const int nMask = LocalConfig::columnMask(this);
    for (int i = 0; i < LocalConfig::kColumnBits; ++i)
        m_pTableWidget->setColumnHidden(LocalConfig::kColumnOfBit[i], !(nMask & (1 << i)));
}

void MainWidget::StretchLastVisibleColumn()
{
    int nLast = -1;
    for (int nColumn = ColumnPortId; nColumn <= ColumnOperation; ++nColumn) {
        if (nColumn == ColumnStatus || m_pTableWidget->isColumnHidden(nColumn))
            continue;
        Header()->setSectionResizeMode(nColumn, QHeaderView::Interactive);
        nLast = nColumn;
    }
    if (nLast >= 0)
        Header()->setSectionResizeMode(nLast, QHeaderView::Stretch);
}

int MainWidget::FindDeviceRow(long nDeviceID) const
{
    for (int nRow = 0; nRow < m_pTableWidget->rowCount(); ++nRow) {
        const QTableWidgetItem* pItem = m_pTableWidget->item(nRow, ColumnCheck);
        if (!pItem)
            return -1; // a placeholder: no device stands behind it
        if (pItem->data(DeviceIdRole).toInt() == nDeviceID)
            return nRow;
    }
    return -1;
}

int MainWidget::FilledRows() const
{
    int nCount = 0;
    for (int nRow = 0; nRow < m_pTableWidget->rowCount(); ++nRow)
        nCount += m_pTableWidget->IsHaveCheckBox(nRow, ColumnCheck);
    return nCount;
}

int MainWidget::TickedRows() const
{
    int nCount = 0;
    for (int nRow = 0; nRow < m_pTableWidget->rowCount(); ++nRow)
        nCount += !m_pTableWidget->isRowHidden(nRow) &&
                  m_pTableWidget->cellCheckState(nRow, ColumnCheck) == Qt::Checked;
    return nCount;
}

int MainWidget::TickableRows() const
{
    int nCount = 0;
    for (int nRow = 0; nRow < m_pTableWidget->rowCount(); ++nRow)
        nCount += !m_pTableWidget->isRowHidden(nRow) && m_pTableWidget->cellCheckEnable(nRow, ColumnCheck);
    return nCount;
}

void MainWidget::onNewDevice(QTreeWidgetItem* pItem)
{
    const int nRow = FilledRows();
    if (nRow >= kMinimumRows) {
        m_pTableWidget->insertRow(nRow);
        m_pTableWidget->setRowHeight(nRow, kRowHeight);
    }
    for (int nColumn = 0; nColumn < ColumnCount; ++nColumn)
        m_pTableWidget->setItem(nRow, nColumn, new QTableWidgetItem);
    m_pTableWidget->setCheckBoxVisible(nRow, ColumnCheck, true);
    // Hidden until the end: a device that is ticked at once counts only from the next evaluation on. Meant.
    m_pTableWidget->setRowHidden(nRow, true);
    FillRow(nRow, deviceOf(pItem), interfaceOf(pItem));
    if (nRow == 0)
        m_pTableWidget->selectRow(0);
    DecideRowVisibility(nRow);
}

void MainWidget::onUpdateDevice(QTreeWidgetItem* pItem)
{
    const StructDeviceInfo stDevice = deviceOf(pItem);
    const int nRow = FindDeviceRow(stDevice.nDeviceID);
    ApplyEncodingType();
    FillRow(nRow, stDevice, interfaceOf(pItem));
}

void MainWidget::onDeleteDevice(QTreeWidgetItem* pItem)
{
    const int nDeviceID = deviceOf(pItem).nDeviceID;
    TakeLastSignals(nDeviceID);
    const int nRow = FindDeviceRow(nDeviceID);
    if (nRow < 0)
        return;
    // Header, buttons and limit are evaluated while the row is still there, and not again after. Meant.
    m_pTableWidget->setCellCheckState(nRow, ColumnCheck, Qt::Unchecked, true);
    m_pTableWidget->removeRow(nRow);
    if (m_pTableWidget->rowCount() < kMinimumRows) {
        m_pTableWidget->insertRow(m_pTableWidget->rowCount());
        m_pTableWidget->setRowHeight(m_pTableWidget->rowCount() - 1, kRowHeight);
    }
    DeviceLeaves(nDeviceID, pItem->text(0));
}

bool MainWidget::SetCellText(int nRow, int nColumn, const QString& strText)
{
    QTableWidgetItem* pItem = m_pTableWidget->item(nRow, nColumn);
    if (pItem)
        pItem->setText(strText);
    return pItem != nullptr;
}

void MainWidget::FillRow(int nRow, const StructDeviceInfo& stDevice, const QString& strInterface)
{
    if (nRow < 0 || nRow >= m_pTableWidget->rowCount())
        return;
    QTableWidgetItem* pCheckItem = m_pTableWidget->item(nRow, ColumnCheck);
    if (!pCheckItem)
        return;
    pCheckItem->setData(DeviceIdRole, stDevice.nDeviceID);
    if (FillIdentity(nRow, stDevice, strInterface))
        FillStatus(nRow, stDevice.nStatus);
}

bool MainWidget::FillIdentity(int nRow, const StructDeviceInfo& stDevice, const QString& strInterface)
{
    const KX_DeviceInfo& info = stDevice.stDeviceInfo;
    const QString strModel = camera_line::modelField(info).text();
    const QString strUserName = camera_line::userNameField(info).text();
    const QString strSerial = camera_line::serialField(info).text();
    if (info.transportType == KX_TRANSPORT_CAMERA_LINK &&
        !SetCellText(nRow, ColumnPortId, camera_line::portIdField(info).text()))
        return false;
    if (!SetCellText(nRow, ColumnModel, strModel) || !SetCellText(nRow, ColumnUserName, strUserName) ||
        !SetCellText(nRow, ColumnSerial, strSerial) || !SetCellText(nRow, ColumnInterface, strInterface))
        return false;
    return info.transportType != KX_TRANSPORT_GIGE ||
           SetCellText(nRow, ColumnMac, camera_line::macText(info));
}

void MainWidget::FillStatus(int nRow, int nStatus)
{
    const StatusLook look = lookOf(nStatus);
    if (look.free) {
        m_pTableWidget->setCheckBoxEnable(nRow, ColumnCheck, true);
        if (Header()->checkState(ColumnCheck) == Qt::Checked)
            m_pTableWidget->setCellCheckState(nRow, ColumnCheck, Qt::Checked, false);
    } else {
        m_pTableWidget->setCellCheckState(nRow, ColumnCheck, Qt::Unchecked, false);
        m_pTableWidget->setCheckBoxEnable(nRow, ColumnCheck, false);
    }
    onCellCheckStateChanged(nRow, ColumnCheck);
    QTableWidgetItem* pItem = m_pTableWidget->item(nRow, ColumnStatus);
    if (!pItem)
        return;
    QIcon& icon = m_mapStatusIcons[look.icon];
    if (icon.isNull())
        icon = QIcon(look.icon);
    pItem->setIcon(icon);
    pItem->setData(StatusCodeRole, look.code);
    SetStatusWord(pItem);
}

// The cell shows the icon alone; who cannot see it gets the word.
void MainWidget::SetStatusWord(QTableWidgetItem* pItem)
{
    const int nCode = pItem->data(StatusCodeRole).toInt();
    const QString strWord = nCode == 3 ? tr("In Use") : nCode == 1 ? tr("Free") : tr("Unreachable");
    pItem->setData(Qt::AccessibleTextRole, strWord);
}

void MainWidget::SetStatusWords()
{
    for (int nRow = 0; nRow < m_pTableWidget->rowCount(); ++nRow)
        if (QTableWidgetItem* pItem = m_pTableWidget->item(nRow, ColumnStatus))
            SetStatusWord(pItem);
}

void MainWidget::DecideRowVisibility(int nRow)
{
    const QTableWidgetItem* pItem = m_pTableWidget->item(nRow, ColumnCheck);
    const QTreeWidgetItem* pCamera =
        pItem ? m_pDeviceTree->findCameraItem(pItem->data(DeviceIdRole).toInt()) : nullptr;
    if (!pCamera)
        return;
    bool bShown = CurrentNodeType() == VELADeviceTree::NodeAllDevices;
    // The camera's own item does not count.
    for (const QTreeWidgetItem* pNode = pCamera->parent(); pNode && !bShown; pNode = pNode->parent())
        bShown = pNode == m_pDeviceTree->currentItem();
    m_pTableWidget->setRowHidden(nRow, !bShown);
}

int MainWidget::CurrentNodeType() const
{
    const QTreeWidgetItem* pCurrent = m_pDeviceTree->currentItem();
    return pCurrent ? pCurrent->data(0, VELADeviceTree::RoleNodeType).toInt() : 0;
}

bool MainWidget::IsPortIdAllowed() const
{
    const int nType = CurrentNodeType();
    return nType == 1 || nType == 14;
}

void MainWidget::OnTreeSelectesChanged()
{
    for (int nRow = 0; nRow < m_pTableWidget->rowCount(); ++nRow)
        DecideRowVisibility(nRow);
    const bool bPortId = IsPortIdAllowed();
    m_pColumnChooser->ShowPortIdBox(bPortId);
    m_pTableWidget->setColumnHidden(ColumnPortId, !bPortId || !(LocalConfig::columnMask(this) & 1));
    onCellCheckStateChanged(0, 0);
}

void MainWidget::onCellCheckStateChanged(int nRow, int nColumn)
{
    Q_UNUSED(nColumn)
    const int nTicked = TickedRows();
    const int nLimit = int(m_nSupportNum);
    if (nTicked > nLimit) {
        OnShowMsg(tr("Prompt"), tr("Operation failed. You can operate %1 devices at most.").arg(nLimit), "");
        m_pTableWidget->setCellCheckState(nRow, ColumnCheck, Qt::Unchecked, false);
        return; // header and buttons stay as they are. Meant.
    }
    const bool bAll = nTicked > 0 && (nTicked == TickableRows() || nTicked == nLimit);
    Header()->setCheckState(ColumnCheck, bAll ? Qt::Checked : Qt::Unchecked, false);
    m_pImportBtn->setEnabled(nTicked > 0);
    m_pExportBtn->setEnabled(nTicked > 0);
}

void MainWidget::onHeaderCheckStateChanged(int nColumn)
{
    const Qt::CheckState eState = Header()->checkState(nColumn);
    if (eState == Qt::PartiallyChecked)
        return;
    for (int nRow = 0; nRow < m_pTableWidget->rowCount(); ++nRow) {
        if (m_pTableWidget->isRowHidden(nRow))
            continue;
        if (eState == Qt::Checked && TickedRows() >= int(m_nSupportNum))
            break;
        m_pTableWidget->setCellCheckState(nRow, nColumn, eState, false);
    }
    const bool bTicked = eState == Qt::Checked && TickedRows() > 0;
    m_pImportBtn->setEnabled(bTicked);
    m_pExportBtn->setEnabled(bTicked);
}

void MainWidget::onSortTableWidget(int nColumn, bool bAscending)
{
    m_pTableWidget->sortItems(nColumn, bAscending ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void MainWidget::ClearOperationStatus()
{
    for (int nRow = 0; nRow < m_pTableWidget->rowCount(); ++nRow) {
        QTableWidgetItem* pItem = m_pTableWidget->item(nRow, ColumnOperation);
        if (!pItem)
            return;
        pItem->setText("");
        m_pTableWidget->setDetailTip(nRow, ColumnOperation, "");
    }
}
