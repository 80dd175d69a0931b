#include <StyledCtl/ORBCustomSortHeaderView.h>
#include <StyledCtl/ORBCustomTableWidget.h>

#include "StyledCtl/style/Theme.h"
#include "StyledCtl/table/CellDelegate.h"

#include <QKeyEvent>

#include <QPointer>

// A check box is the item's check state; whether it is enabled, the item's flag.
class ORBCustomTableWidget::Private
{
public:
    explicit Private(ORBCustomTableWidget* owner) : table(owner) {}

    QTableWidgetItem* checkItem(int row, int column) const
    {
        QTableWidgetItem* item = table->item(row, column);
        return item && item->data(Qt::CheckStateRole).isValid() ? item : nullptr;
    }

    void keepStretchedVisible(int resized);
    void setAccessibleTexts();

    ORBCustomTableWidget* table;
    QMetaObject::Connection sectionResized;
};

ORBCustomTableWidget::ORBCustomTableWidget(QWidget* parent)
    : QTableWidget(parent), ORBCustomObject(this), d(std::make_unique<Private>(this))
{
    styled::CellDelegate* delegate = new styled::CellDelegate(this);
    setItemDelegate(delegate);
    connect(delegate, &styled::CellDelegate::clicked, this, &ORBCustomTableWidget::turnCheckBox);
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setHorizontalScrollMode(ScrollPerPixel);
    setVerticalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false); // Tab leaves the table, arrows move in it
    setWordWrap(false);
    verticalHeader()->hide();
    verticalHeader()->setMinimumSectionSize(20);
    viewport()->setAttribute(Qt::WA_Hover);
}

ORBCustomTableWidget::~ORBCustomTableWidget() = default;

void ORBCustomTableWidget::setCheckBoxVisible(int row, int column, bool visible)
{
    QTableWidgetItem* cell = item(row, column);
    if (!cell || visible == IsHaveCheckBox(row, column))
        return;
    cell->setFlags(visible ? cell->flags() | Qt::ItemIsUserCheckable
                           : cell->flags() & ~Qt::ItemIsUserCheckable);
    cell->setData(Qt::CheckStateRole, visible ? QVariant(int(Qt::Unchecked)) : QVariant());
    cell->setData(Qt::AccessibleTextRole, visible ? QVariant(tr("Selected")) : QVariant());
}

bool ORBCustomTableWidget::IsHaveCheckBox(int row, int column) const
{
    return d->checkItem(row, column) != nullptr;
}

void ORBCustomTableWidget::setCheckBoxEnable(int row, int column, bool enable)
{
    if (QTableWidgetItem* cell = d->checkItem(row, column))
        cell->setFlags(enable ? cell->flags() | Qt::ItemIsUserCheckable
                              : cell->flags() & ~Qt::ItemIsUserCheckable);
}

bool ORBCustomTableWidget::cellCheckEnable(int row, int column) const
{
    const QTableWidgetItem* cell = d->checkItem(row, column);
    return cell && (cell->flags() & Qt::ItemIsUserCheckable);
}

Qt::CheckState ORBCustomTableWidget::cellCheckState(int row, int column) const
{
    const QTableWidgetItem* cell = d->checkItem(row, column);
    return cell ? cell->checkState() : Qt::Unchecked;
}

void ORBCustomTableWidget::setCellCheckState(int row, int column, Qt::CheckState state, bool notify)
{
    QTableWidgetItem* cell = d->checkItem(row, column);
    if (cell && (state == Qt::Unchecked || cellCheckEnable(row, column)))
        cell->setCheckState(state);
    if (notify)
        emit SigCellCheckStateChanged(row, column);
}

void ORBCustomTableWidget::setDetailTip(int row, int column, const QString& tip)
{
    QTableWidgetItem* cell = item(row, column);
    if (!cell)
        return;
    const QVariant value = tip.isEmpty() ? QVariant() : QVariant(tip);
    cell->setData(Qt::ToolTipRole, value);
    cell->setData(Qt::AccessibleDescriptionRole, value);
}

QString ORBCustomTableWidget::detailTip(int row, int column) const
{
    const QTableWidgetItem* cell = item(row, column);
    return cell ? cell->toolTip() : QString();
}

void ORBCustomTableWidget::connetSectionResized(bool connected)
{
    disconnect(d->sectionResized);
    if (connected)
        d->sectionResized = connect(horizontalHeader(), &QHeaderView::sectionResized, this,
                                    [this](int section) { d->keepStretchedVisible(section); });
}

void ORBCustomTableWidget::Private::keepStretchedVisible(int resized)
{
    QHeaderView* header = table->horizontalHeader();
    const ORBCustomSortHeaderView* sortHeader = qobject_cast<ORBCustomSortHeaderView*>(header);
    if (!sortHeader || !sortHeader->isPressed() || header->sectionResizeMode(resized) == QHeaderView::Stretch)
        return;
    int room = table->viewport()->width();
    bool stretches = false;
    for (int section = 0; section < header->count(); ++section) {
        if (section == resized || header->isSectionHidden(section))
            continue;
        const bool stretched = header->sectionResizeMode(section) == QHeaderView::Stretch;
        room -= stretched ? header->minimumSectionSize() : header->sectionSize(section);
        stretches = stretches || stretched;
    }
    room = qMax(room, header->minimumSectionSize());
    if (stretches && header->sectionSize(resized) > room)
        header->resizeSection(resized, room);
}

void ORBCustomTableWidget::turnCheckBox(const QModelIndex& cell)
{
    const bool checked = cellCheckState(cell.row(), cell.column()) == Qt::Checked;
    setCellCheckState(cell.row(), cell.column(), checked ? Qt::Unchecked : Qt::Checked, true);
}

void ORBCustomTableWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->key() != Qt::Key_Space || currentRow() < 0) {
        QTableWidget::keyPressEvent(event);
        return;
    }
    int column = currentColumn();
    for (int first = 0; first < columnCount() && !IsHaveCheckBox(currentRow(), column); ++first)
        if (IsHaveCheckBox(currentRow(), first))
            column = first;
    if (cellCheckEnable(currentRow(), column))
        turnCheckBox(model()->index(currentRow(), column));
}

// The theme's palette, with the caller's colours on top.
void ORBCustomTableWidget::cStyleChanged()
{
    QPalette colors = palette();
    if (cBackgroundColor().isValid())
        colors.setColor(QPalette::Base, cBackgroundColor());
    if (cFontColor().isValid())
        colors.setColor(QPalette::Text, cFontColor());
    if (colors != palette())
        setPalette(colors);
    const QString border =
        cBorderColor().isValid()
            ? QStringLiteral("ORBCustomTableWidget { border: 1px solid %1; }").arg(cBorderColor().name())
            : QString();
    if (border != styleSheet())
        setStyleSheet(border);
    ORBCustomObject::cStyleChanged();
}

void ORBCustomTableWidget::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        d->setAccessibleTexts();
    QTableWidget::changeEvent(event);
}

void ORBCustomTableWidget::Private::setAccessibleTexts()
{
    for (int row = 0; row < table->rowCount(); ++row)
        for (int column = 0; column < table->columnCount(); ++column)
            if (QTableWidgetItem* item = checkItem(row, column))
                item->setData(Qt::AccessibleTextRole, tr("Selected"));
}
