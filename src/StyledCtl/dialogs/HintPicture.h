#pragma once

#include "StyledCtl/style/Glyphs.h"

#include <QWidget>

namespace styled
{

// The drawn sign beside a message.
class HintPicture : public QWidget
{
public:
    HintPicture(HintGlyph glyph, QWidget* parent);
    void setGlyph(HintGlyph glyph);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    HintGlyph m_glyph;
};

} // namespace styled
