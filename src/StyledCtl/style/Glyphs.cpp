#include "StyledCtl/style/Glyphs.h"

#include "StyledCtl/style/Theme.h"
#include <StyledCtl/StyledCtl.h>

#include <QIcon>
#include <QPainter>
#include <QPainterPath>
#include <QWidget>

#include <cmath>

namespace styled
{

namespace
{

class SavedPainter
{
public:
    explicit SavedPainter(QPainter& painter) : m_painter(painter) { m_painter.save(); }
    ~SavedPainter() { m_painter.restore(); }
    SavedPainter(const SavedPainter&) = delete;
    SavedPainter& operator=(const SavedPainter&) = delete;

private:
    QPainter& m_painter;
};

QPen roundPen(const QColor& color, qreal width)
{
    return QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

void drawTick(QPainter& painter, const QRectF& box, const QColor& color, qreal width)
{
    const auto at = [&box](qreal x, qreal y) {
        return QPointF(box.left() + x * box.width(), box.top() + y * box.height());
    };
    const QPointF points[] = {at(0.24, 0.52), at(0.43, 0.71), at(0.77, 0.31)};
    painter.setPen(roundPen(color, width));
    painter.drawPolyline(points, 3);
}

} // namespace

void drawBox(QPainter& painter, const QRectF& rect, const QColor& fill, const QColor& border, int edges,
             qreal radius)
{
    const SavedPainter saved(painter);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool framed = border.isValid() && edges >= ORBCustom::BorderAll;
    if (fill.isValid() || framed) {
        painter.setPen(framed ? QPen(border, 1) : QPen(Qt::NoPen));
        painter.setBrush(fill.isValid() ? QBrush(fill) : QBrush(Qt::NoBrush));
        painter.drawRoundedRect(framed ? rect.adjusted(0.5, 0.5, -0.5, -0.5) : rect, radius, radius);
    }
    if (!border.isValid() || framed || edges == ORBCustom::BorderNone)
        return;
    painter.fillRect(QRectF(rect.left(), rect.bottom() - 1, rect.width(), 1), border);
    if (edges == ORBCustom::BorderTopAndBottom)
        painter.fillRect(QRectF(rect.left(), rect.top(), rect.width(), 1), border);
}

void drawImage(QPainter& painter, const QRect& rect, const QIcon& image, bool enabled)
{
    // The sizes of the files are in device pixels of an ordinary screen; @2x files answer with theirs halved.
    const QList<QSize> sizes = image.availableSizes();
    const QSize natural = sizes.isEmpty() ? rect.size() : sizes.first().boundedTo(rect.size());
    QRect place(QPoint(), natural);
    place.moveCenter(rect.center());
    image.paint(&painter, place, Qt::AlignCenter, enabled ? QIcon::Normal : QIcon::Disabled);
}

void drawCheckBox(QPainter& painter, const QRectF& box, Qt::CheckState state, int status)
{
    const SavedPainter saved(painter);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool enabled = status != ORBCustom::StatusDisabled;
    const bool hover = status == ORBCustom::StatusHover;
    const bool pressed = status == ORBCustom::StatusPressed;
    QColor fill = themeColor(pressed ? "controlPressed" : hover ? "controlHover" : "control");
    QColor border = themeColor(hover || pressed ? "focus" : "lineStrong");
    if (state != Qt::Unchecked) {
        fill = themeColor(pressed ? "accentPressed" : hover ? "accentHover" : "accent");
        border = themeColor(hover || pressed ? "focus" : "accentLine");
    }
    if (!enabled) {
        fill = themeColor("controlDisabled");
        border = themeColor("line");
    }
    drawBox(painter, box, fill, border, ORBCustom::BorderAllRounded, 3);
    const QColor mark = themeColor(enabled ? "text" : "textDisabled");
    if (state == Qt::Checked)
        drawTick(painter, box, mark, 2);
    else if (state == Qt::PartiallyChecked)
        painter.fillRect(box.adjusted(4, 7, -4, -7), mark);
}

void drawSortArrow(QPainter& painter, const QPointF& center, bool ascending, const QColor& color)
{
    const SavedPainter saved(painter);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal up = ascending ? -1 : 1;
    const QPointF points[] = {center + QPointF(-3.5, -1.75 * up), center + QPointF(0, 1.75 * up),
                              center + QPointF(3.5, -1.75 * up)};
    painter.setPen(roundPen(color, 1.5));
    painter.drawPolyline(points, 3);
}

void drawTitleGlyph(QPainter& painter, const QPointF& center, TitleGlyph glyph, const QColor& color)
{
    const SavedPainter saved(painter);
    QPen pen(color, 1);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    // Straight strokes of one pixel lie in the middle of a pixel.
    const QPointF middle(std::floor(center.x()) + 0.5, std::floor(center.y()) + 0.5);
    const QRectF box(middle - QPointF(5, 5), QSizeF(10, 10));
    switch (glyph) {
    case TitleGlyph::Minimize:
        painter.drawLine(box.left(), middle.y(), box.right(), middle.y());
        break;
    case TitleGlyph::Maximize:
        painter.drawRect(box);
        break;
    case TitleGlyph::Restore: {
        painter.drawRect(box.adjusted(0, 2, -2, 0));
        const QPointF behind[] = {box.topLeft() + QPointF(2, 2), box.topLeft() + QPointF(2, 0),
                                  box.topRight(), box.bottomRight() - QPointF(0, 2),
                                  box.bottomRight() - QPointF(2, 2)};
        painter.drawPolyline(behind, 5);
        break;
    }
    case TitleGlyph::Close:
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(color, 1.2));
        painter.drawLine(box.topLeft(), box.bottomRight());
        painter.drawLine(box.topRight(), box.bottomLeft());
        break;
    }
}

void drawHintGlyph(QPainter& painter, const QRectF& rect, HintGlyph glyph)
{
    static const char* const names[] = {"information", "warning", "error", "success"};
    const SavedPainter saved(painter);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(themeColor(names[int(glyph)]));
    painter.drawEllipse(rect);

    const QColor mark = themeColor("onHint");
    const qreal unit = rect.width() / 16;
    const QPointF center = rect.center();
    const auto line = [&](qreal x1, qreal y1, qreal x2, qreal y2) {
        painter.setPen(roundPen(mark, 1.8 * unit));
        painter.drawLine(center + unit * QPointF(x1, y1), center + unit * QPointF(x2, y2));
    };
    switch (glyph) {
    case HintGlyph::Information:
        line(0, -3.6, 0, -3.55);
        line(0, -0.4, 0, 3.8);
        break;
    case HintGlyph::Warning:
        line(0, -3.8, 0, 0.8);
        line(0, 3.75, 0, 3.8);
        break;
    case HintGlyph::Error:
        line(-2.6, -2.6, 2.6, 2.6);
        line(-2.6, 2.6, 2.6, -2.6);
        break;
    case HintGlyph::Done:
        drawTick(painter, rect.adjusted(unit, unit, -unit, -unit), mark, 1.8 * unit);
        break;
    }
}

void drawBusyRing(QPainter& painter, const QRectF& rect, qreal turn)
{
    const SavedPainter saved(painter);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal width = rect.width() / 9;
    const QRectF ring = rect.adjusted(width / 2, width / 2, -width / 2, -width / 2);
    painter.setPen(QPen(themeColor("line"), width));
    painter.drawEllipse(ring);
    // Qt counts angles in sixteenths of a degree, against the clock.
    constexpr int kFullTurn = 360 * 16;
    painter.setPen(QPen(themeColor("accent"), width, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(ring, kFullTurn / 4 - int(turn * kFullTurn), -kFullTurn / 4);
}

void drawFocusRing(QPainter& painter, const QRectF& rect, qreal radius)
{
    const SavedPainter saved(painter);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(themeColor("focus"), 2));
    painter.drawRoundedRect(rect.adjusted(1, 1, -1, -1), radius, radius);
}

void drawShadow(QPainter& painter, const QRectF& panel, int margin, qreal radius)
{
    const SavedPainter saved(painter);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    QColor color = themeColor("shadow");
    for (int i = 0; i < margin; ++i) {
        const qreal nearness = 1 - (i + 0.5) / margin;
        color.setAlphaF(0.22 * nearness * nearness * nearness);
        painter.setPen(QPen(color, 1));
        const qreal out = i + 0.5;
        painter.drawRoundedRect(panel.adjusted(-out, -out, out, out), radius + out, radius + out);
    }
}

QRect centeredCheckBox(const QRect& rect)
{
    return QRect(rect.left() + (rect.width() - kCheckBoxSize) / 2,
                 rect.top() + (rect.height() - kCheckBoxSize) / 2, kCheckBoxSize, kCheckBoxSize);
}

bool showsFocus(const QWidget* widget)
{
    return widget->hasFocus() && widget->window()->testAttribute(Qt::WA_KeyboardFocusChange);
}

} // namespace styled
