// A table whose cells may hold check boxes and tips, and its headers.
#pragma once

#include "ORBCustomObject.h"

#include <QHeaderView>
#include <QTableWidget>

// A cell's check box, its enabled flag, its state and its tip stay with their row when rows are sorted,
// inserted or removed. Where no check box is, a cell is neither enabled nor checked. Qt::Checked is ignored
// on an absent or disabled check box; Qt::Unchecked always takes effect.
class STYLEDCTL_API ORBCustomTableWidget : public QTableWidget, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomTableWidget(QWidget* parent = nullptr);
    ~ORBCustomTableWidget() override;

    // The cell must have an item.
    void setCheckBoxVisible(int row, int column, bool visible);
    bool IsHaveCheckBox(int row, int column) const;
    void setCheckBoxEnable(int row, int column, bool enable);
    bool cellCheckEnable(int row, int column) const;
    Qt::CheckState cellCheckState(int row, int column) const;
    // `notify`: SigCellCheckStateChanged is emitted, also when nothing changed.
    void setCellCheckState(int row, int column, Qt::CheckState state, bool notify);
    // A tip for the cell; empty takes it away.
    void setDetailTip(int row, int column, const QString& tip);
    QString detailTip(int row, int column) const;
    // Whether the columns that stretch follow when the user resizes a section.
    void connetSectionResized(bool connected);

signals:
    void SigCellCheckStateChanged(int nRow, int nColumn);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

// Columns that sort: a click shows the arrow and asks for ascending order first, then turns it round.
class STYLEDCTL_API ORBCustomSortHeaderView : public QHeaderView, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomSortHeaderView(QWidget* parent = nullptr);
    ~ORBCustomSortHeaderView() override;

    void enableSort(int column, bool enable);
    bool isSortEnabled(int column) const;

signals:
    void SigSortByColumn(int column, bool bAscending);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

// Columns that have a check box in their header.
class STYLEDCTL_API ORBCustomCheckHeaderView : public ORBCustomSortHeaderView
{
    Q_OBJECT

public:
    explicit ORBCustomCheckHeaderView(QWidget* parent = nullptr);
    ~ORBCustomCheckHeaderView() override;

    void setCheckBoxVisible(int column, bool visible);
    Qt::CheckState checkState(int column) const;
    void setCheckState(int column, Qt::CheckState state, bool notify);

signals:
    // The state is the new one already.
    void SigCheckStateChange(int column);

protected:
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};
