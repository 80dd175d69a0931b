#include "StyledCtl/dialogs/HintPicture.h"

#include <QPainter>

namespace styled
{

HintPicture::HintPicture(HintGlyph glyph, QWidget* parent) : QWidget(parent), m_glyph(glyph)
{
    setFixedSize(32, 32);
}

void HintPicture::setGlyph(HintGlyph glyph)
{
    m_glyph = glyph;
    update();
}

void HintPicture::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    drawHintGlyph(painter, rect(), m_glyph);
}

} // namespace styled
