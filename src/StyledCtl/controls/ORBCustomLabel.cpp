#include <StyledCtl/ORBCustomLabel.h>

#include <QPainter>

ORBCustomLabel::ORBCustomLabel(QWidget* parent) : QLabel(parent), ORBCustomObject(this) {}

ORBCustomLabel::~ORBCustomLabel() = default;

void ORBCustomLabel::cStyleChanged()
{
    const QColor color = cFontColor(cItemStatus());
    if (color.isValid() && palette().color(QPalette::WindowText) != color) {
        QPalette changed = palette();
        changed.setColor(QPalette::WindowText, color); // in every colour group
        setPalette(changed);
    }
    ORBCustomObject::cStyleChanged();
}

void ORBCustomLabel::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(this);
        cDrawFacet(painter, rect(), QColor(), QColor(), ORBCustom::BorderNone, 0);
    }
    QLabel::paintEvent(event);
}
