#include <StyledCtl/ORBCustomLineWidget.h>

#include "StyledCtl/style/Theme.h"

#include <QPainter>

using styled::themeColor;

ORBCustomLineWidget::ORBCustomLineWidget(QWidget* parent) : QFrame(parent), ORBCustomObject(this)
{
    setFrameShape(QFrame::NoFrame);
    cSetLineType(0);
}

ORBCustomLineWidget::~ORBCustomLineWidget() = default;

void ORBCustomLineWidget::cSetLineType(int type)
{
    m_horizontal = type == 1;
    setSizePolicy(m_horizontal ? QSizePolicy::Expanding : QSizePolicy::Fixed,
                  m_horizontal ? QSizePolicy::Fixed : QSizePolicy::Expanding);
    updateGeometry();
}

QSize ORBCustomLineWidget::sizeHint() const
{
    return m_horizontal ? QSize(20, 1) : QSize(1, 20);
}

void ORBCustomLineWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    cDrawFacet(painter, rect(), themeColor("lineStrong"), QColor(), ORBCustom::BorderNone, 0);
}
