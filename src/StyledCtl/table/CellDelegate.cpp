#include "StyledCtl/table/CellDelegate.h"

#include "StyledCtl/style/Glyphs.h"

#include <StyledCtl/ORBCustomTableWidget.h>

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTextDocument>
#include <QToolTip>

namespace styled
{

namespace
{

constexpr int kPadding = 8;

bool hasCheckBox(const QModelIndex& index)
{
    return index.data(Qt::CheckStateRole).isValid();
}

// A cell that holds nothing else: the whole of it is the check box's.
bool isCheckCell(const QModelIndex& index)
{
    return hasCheckBox(index) && index.data(Qt::DisplayRole).toString().isEmpty();
}

void drawBackground(QPainter& painter, const QStyleOptionViewItem& option)
{
    if (option.backgroundBrush.style() != Qt::NoBrush)
        painter.fillRect(option.rect, option.backgroundBrush);
    if (option.state & QStyle::State_Selected)
        painter.fillRect(option.rect, option.palette.brush(QPalette::Normal, QPalette::Highlight));
}

void drawText(QPainter& painter, const QRect& rect, const QStyleOptionViewItem& option,
              const QModelIndex& index)
{
    painter.setFont(option.font);
    const QVariant foreground = index.data(Qt::ForegroundRole);
    const QPalette::ColorGroup group =
        option.state & QStyle::State_Enabled ? QPalette::Normal : QPalette::Disabled;
    // A colour of its own tells something (a failure, say): it stays in selected rows.
    painter.setPen(foreground.isValid() ? foreground.value<QBrush>().color()
                                        : option.palette.color(group, QPalette::Text));
    const QString line = QString(option.text).replace(QLatin1Char('\n'), QLatin1Char(' '));
    painter.drawText(rect, int(option.displayAlignment) | Qt::TextSingleLine,
                     option.fontMetrics.elidedText(line, option.textElideMode, rect.width()));
}

} // namespace

CellDelegate::CellDelegate(ORBCustomTableWidget* table) : QStyledItemDelegate(table), m_table(table) {}

QRect CellDelegate::checkBoxRect(const QRect& cell, const QModelIndex& index)
{
    return isCheckCell(index)
               ? centeredCheckBox(cell)
               : centeredCheckBox(QRect(cell.left() + kPadding, cell.top(), kCheckBoxSize, cell.height()));
}

int CellDelegate::checkBoxStatus(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    if (!m_table->isEnabled() || !m_table->cellCheckEnable(index.row(), index.column()))
        return ORBCustom::StatusDisabled;
    return option.state & QStyle::State_MouseOver ? ORBCustom::StatusHover : ORBCustom::StatusNormal;
}

void CellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const
{
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    painter->save();
    drawBackground(*painter, item);
    QRect contents = item.rect.adjusted(kPadding, 0, -kPadding, 0);
    if (hasCheckBox(index)) {
        const QRect box = checkBoxRect(item.rect, index);
        drawCheckBox(*painter, box, Qt::CheckState(index.data(Qt::CheckStateRole).toInt()),
                     checkBoxStatus(item, index));
        contents.setLeft(box.right() + 1 + kPadding);
    }
    if (!item.icon.isNull()) {
        const QIcon::Mode mode = item.state & QStyle::State_Enabled ? QIcon::Normal : QIcon::Disabled;
        QRect place(QPoint(), item.decorationSize.boundedTo(item.rect.size()));
        place.moveCenter(item.rect.center());
        if (!item.text.isEmpty())
            place.moveLeft(contents.left());
        item.icon.paint(painter, place, Qt::AlignCenter, mode);
        contents.setLeft(place.right() + 1 + kPadding);
    }
    if (!item.text.isEmpty())
        drawText(*painter, contents, item, index);
    if ((item.state & QStyle::State_HasFocus) && showsFocus(m_table))
        drawFocusRing(*painter, item.rect, kControlRadius);
    painter->restore();
}

bool CellDelegate::editorEvent(QEvent* event, QAbstractItemModel*, const QStyleOptionViewItem& option,
                               const QModelIndex& index)
{
    if (event->type() != QEvent::MouseButtonRelease)
        return false;
    const QMouseEvent* mouse = static_cast<QMouseEvent*>(event);
    if (mouse->button() != Qt::LeftButton || !m_table->cellCheckEnable(index.row(), index.column()))
        return false;
    const QRect target = isCheckCell(index) ? option.rect : checkBoxRect(option.rect, index);
    if (!target.contains(mouse->pos()))
        return false;
    emit clicked(index);
    return true;
}

bool CellDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                             const QModelIndex& index)
{
    const QString tip = event->type() == QEvent::ToolTip ? index.data(Qt::ToolTipRole).toString() : QString();
    if (tip.isEmpty())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    // Tips may hold words of a camera: never to be read as markup.
    QToolTip::showText(event->globalPos(), Qt::convertFromPlainText(tip, Qt::WhiteSpaceNormal),
                       view->viewport(), option.rect);
    return true;
}

} // namespace styled
