#pragma once

#include "ORBCustomObject.h"

#include <QFrame>

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
