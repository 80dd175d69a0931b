#pragma once

#include "ORBCustomObject.h"

#include <QPushButton>

// Style selectors: 0 framed, 1 flat, 2 the one that stands out in a dialog.
class STYLEDCTL_API ORBCustomPushButton : public QPushButton, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomPushButton(QWidget* parent = nullptr, int style = 0);
    ~ORBCustomPushButton() override;

    // Whether the button handles clicks itself (true at start) or lets them through to its parent.
    void cSetControlClickEvent(bool control);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    int cItemStatus() const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void drawContents(QPainter& painter);

    const int m_selector;
    bool m_controlsClicks = true;
};
