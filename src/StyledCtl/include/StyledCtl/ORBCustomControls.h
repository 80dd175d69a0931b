// Buttons, labels, lines and check boxes.
#pragma once

#include "ORBCustomObject.h"

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>

// Style selectors: 0 framed, 1 flat.
class STYLEDCTL_API ORBCustomPushButton : public QPushButton, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomPushButton(QWidget* parent = nullptr, int style = 0);
    ~ORBCustomPushButton() override;

    // Whether the button handles clicks itself (true at start) or lets them through to its parent.
    void cSetControlClickEvent(bool control);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    bool m_controlsClicks = true;
};

class STYLEDCTL_API ORBCustomLabel : public QLabel, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomLabel(QWidget* parent = nullptr);
    ~ORBCustomLabel() override;
};

class STYLEDCTL_API ORBCustomLineWidget : public QFrame, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomLineWidget(QWidget* parent = nullptr);
    ~ORBCustomLineWidget() override;

    // 0 vertical, 1 horizontal.
    void cSetLineType(int type);
};

// Style selectors: 0 in a form, 1 in a list.
class STYLEDCTL_API ORBCustomCheckBox : public QCheckBox, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomCheckBox(QWidget* parent = nullptr, int style = 0);
    ~ORBCustomCheckBox() override;
};
