// What the widgets draw themselves, sharp at any device pixel ratio.
#pragma once

#include <QColor>
#include <QRectF>
#include <Qt>

class QIcon;
class QPainter;
class QSize;
class QWidget;

namespace styled
{

constexpr int kCheckBoxSize = 16;
constexpr qreal kControlRadius = 2;
constexpr qreal kPanelRadius = 4;

enum class TitleGlyph
{
    Minimize,
    Maximize,
    Restore,
    Close
};

enum class HintGlyph
{
    Information,
    Warning,
    Error,
    Done
};

// A filled box; `edges`: ORBCustom::BorderEdges. Invalid colours draw nothing.
void drawBox(QPainter& painter, const QRectF& rect, const QColor& fill, const QColor& border, int edges,
             qreal radius);
// Centred in the rectangle at its own size, made smaller when it does not fit.
void drawImage(QPainter& painter, const QRect& rect, const QIcon& image, bool enabled);
// `status`: ORBCustom::ItemStatus.
void drawCheckBox(QPainter& painter, const QRectF& box, Qt::CheckState state, int status);
void drawSortArrow(QPainter& painter, const QPointF& center, bool ascending, const QColor& color);
void drawTitleGlyph(QPainter& painter, const QPointF& center, TitleGlyph glyph, const QColor& color);
void drawHintGlyph(QPainter& painter, const QRectF& rect, HintGlyph glyph);
// `turn`: 0 to 1.
void drawBusyRing(QPainter& painter, const QRectF& rect, qreal turn);
void drawFocusRing(QPainter& painter, const QRectF& rect, qreal radius);
void drawShadow(QPainter& painter, const QRectF& panel, int margin, qreal radius);

// The square of a check box in the middle of a rectangle, on whole pixels.
QRect centeredCheckBox(const QRect& rect);
// Whether the widget has the focus and the user came to it by keyboard.
bool showsFocus(const QWidget* widget);

} // namespace styled
