// Buttons, labels, lines and check boxes.
#pragma once

#include "ORBCustomObject.h"

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
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

class STYLEDCTL_API ORBCustomLabel : public QLabel, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomLabel(QWidget* parent = nullptr);
    ~ORBCustomLabel() override;

protected:
    void cStyleChanged() override;
    void paintEvent(QPaintEvent* event) override;
};

// A separator in its background colour.
class STYLEDCTL_API ORBCustomLineWidget : public QFrame, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomLineWidget(QWidget* parent = nullptr);
    ~ORBCustomLineWidget() override;

    // 0 vertical (at start), 1 horizontal; one pixel thick unless a fixed size says otherwise.
    void cSetLineType(int type);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_horizontal = false;
};

// Style selectors: 0 in a form, 1 in a list (the whole row takes clicks and lights up).
class STYLEDCTL_API ORBCustomCheckBox : public QCheckBox, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomCheckBox(QWidget* parent = nullptr, int style = 0);
    ~ORBCustomCheckBox() override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    int cItemStatus() const override;
    bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    const int m_selector;
};
