#pragma once

#include "ORBCustomObject.h"

#include <QHeaderView>

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
