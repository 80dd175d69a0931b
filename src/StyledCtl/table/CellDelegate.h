#pragma once

#include <QStyledItemDelegate>

#include <functional>

class ORBCustomTableWidget;

namespace styled
{

// Draws the table's cells and takes clicks on their check boxes.
class CellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit CellDelegate(ORBCustomTableWidget* table);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

    // Where the check box of a cell is drawn.
    static QRect checkBoxRect(const QRect& cell, const QModelIndex& index);

signals:
    // The user clicked an enabled check box.
    void clicked(const QModelIndex& cell);

private:
    int checkBoxStatus(const QStyleOptionViewItem& option, const QModelIndex& index) const;

    ORBCustomTableWidget* m_table;
};

} // namespace styled
