#include "StyledCtl/window/TitleButton.h"

#include "StyledCtl/style/Theme.h"

#include <QKeyEvent>
#include <QPainter>

namespace styled
{

TitleButton::TitleButton(TitleGlyph glyph, QWidget* parent) : QAbstractButton(parent), m_glyph(glyph)
{
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
}

void TitleButton::setGlyph(TitleGlyph glyph)
{
    m_glyph = glyph;
    update();
}

void TitleButton::setCaption(const QString& caption)
{
    setToolTip(caption);
    setAccessibleName(caption);
}

QSize TitleButton::sizeHint() const
{
    return QSize(44, 30);
}

void TitleButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void TitleButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const bool closes = m_glyph == TitleGlyph::Close;
    const bool lit = isEnabled() && (isDown() || underMouse());
    if (lit && isDown())
        painter.fillRect(rect(), themeColor(closes ? "closePressed" : "titlePressed"));
    else if (lit)
        painter.fillRect(rect(), themeColor(closes ? "close" : "titleHover"));
    const char* color = !isEnabled() ? "textDisabled" : lit && closes ? "onClose" : "text";
    drawTitleGlyph(painter, QRectF(rect()).center(), m_glyph, themeColor(color));
    if (showsFocus(this))
        drawFocusRing(painter, QRectF(rect()).adjusted(2, 2, -2, -2), kControlRadius);
}

} // namespace styled
