#pragma once

#include "ORBCustomObject.h"

#include <QTableWidget>

// A cell's check box, its enabled flag, its state and its tip stay with their row when rows are sorted,
// inserted or removed: they live in the cell's item. Where no check box is, a cell is neither enabled nor
// checked. Qt::Checked is ignored on an absent or disabled check box; Qt::Unchecked always takes effect.
// Cells are not edited in place; a click selects a row. The space bar turns the current cell's check box, or
// the first one of its row.
class STYLEDCTL_API ORBCustomTableWidget : public QTableWidget, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomTableWidget(QWidget* parent = nullptr);
    ~ORBCustomTableWidget() override;

    // The cell must have an item. A new check box is enabled and not checked.
    void setCheckBoxVisible(int row, int column, bool visible);
    bool IsHaveCheckBox(int row, int column) const;
    void setCheckBoxEnable(int row, int column, bool enable);
    bool cellCheckEnable(int row, int column) const;
    Qt::CheckState cellCheckState(int row, int column) const;
    // `notify`: SigCellCheckStateChanged is emitted, also when nothing changed.
    void setCellCheckState(int row, int column, Qt::CheckState state, bool notify);
    // A tip for the cell, in plain text; empty takes it away. The cell must have an item.
    void setDetailTip(int row, int column, const QString& tip);
    QString detailTip(int row, int column) const;
    // Whether columns that the user makes wider stop where a stretching column would leave the view. Counts
    // for the horizontal header that is set now.
    void connetSectionResized(bool connected);

signals:
    void SigCellCheckStateChanged(int nRow, int nColumn);

protected:
    void cStyleChanged() override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    class Private;
    friend class Private;
    void turnCheckBox(const QModelIndex& cell);
    std::unique_ptr<Private> d;
};
