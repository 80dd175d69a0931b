#pragma once

#include "StyledCtl/style/Glyphs.h"

#include <QAbstractButton>

namespace styled
{

// A button of the title bar: a drawn glyph, reachable by Tab.
class TitleButton : public QAbstractButton
{
    Q_OBJECT

public:
    TitleButton(TitleGlyph glyph, QWidget* parent);

    void setGlyph(TitleGlyph glyph);
    TitleGlyph glyph() const { return m_glyph; }
    // For who looks and for who listens.
    void setCaption(const QString& caption);

    QSize sizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    TitleGlyph m_glyph;
};

} // namespace styled
