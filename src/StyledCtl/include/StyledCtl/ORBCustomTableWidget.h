// A table whose cells may hold check boxes and tips, and its headers.
#pragma once

#include "ORBCustomObject.h"

#include <QHeaderView>
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

// Columns that sort: a click shows the arrow and asks for ascending order first, then turns it round. By
// keyboard: Tab into the header, arrows to a column, space or Enter for a click.
class STYLEDCTL_API ORBCustomSortHeaderView : public QHeaderView, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomSortHeaderView(QWidget* parent = nullptr);
    ~ORBCustomSortHeaderView() override;

    void enableSort(int column, bool enable);
    bool isSortEnabled(int column) const;
    // Whether a mouse button is down in the header: a change of a width then comes from the user.
    bool isPressed() const;

signals:
    void SigSortByColumn(int column, bool bAscending);

protected:
    // A click on the section; `position` in the viewport, null from the keyboard.
    virtual void clickSection(int column, const QPoint* position);
    // Whether a click on it does anything.
    virtual bool isClickable(int column) const;
    // Where the text may go.
    virtual QRect textRect(const QRect& section, int column) const;

    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;
    // What a section shows of hover, pressed and disabled.
    int sectionStatus(int column) const;

private:
    class Private;
    void moveFocusedSection(int step);
    void setTexts();
    std::unique_ptr<Private> d;
};

// Columns that have a check box in their header. In a column that also sorts only the box turns it.
class STYLEDCTL_API ORBCustomCheckHeaderView : public ORBCustomSortHeaderView
{
    Q_OBJECT

public:
    explicit ORBCustomCheckHeaderView(QWidget* parent = nullptr);
    ~ORBCustomCheckHeaderView() override;

    void setCheckBoxVisible(int column, bool visible);
    Qt::CheckState checkState(int column) const;
    // `notify`: SigCheckStateChange is emitted, also when nothing changed. Ignored where no check box is.
    void setCheckState(int column, Qt::CheckState state, bool notify);

signals:
    // The state is the new one already.
    void SigCheckStateChange(int column);

protected:
    void clickSection(int column, const QPoint* position) override;
    bool isClickable(int column) const override;
    QRect textRect(const QRect& section, int column) const override;
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;

private:
    class Private;
    QRect boxRect(const QRect& section, int column) const;
    std::unique_ptr<Private> d;
};
