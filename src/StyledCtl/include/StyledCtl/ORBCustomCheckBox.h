#pragma once

#include "ORBCustomObject.h"

#include <QCheckBox>

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
