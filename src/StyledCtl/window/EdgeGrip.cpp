#include "StyledCtl/window/EdgeGrip.h"

#include <QLayout>
#include <QMouseEvent>
#include <QWindow>

namespace styled
{

namespace
{

constexpr int kInside = 4;  // of the panel
constexpr int kOutside = 6; // of the margin
constexpr int kCorner = 10;

Qt::CursorShape cursorFor(Qt::Edges edges)
{
    if (edges == (Qt::LeftEdge | Qt::TopEdge) || edges == (Qt::RightEdge | Qt::BottomEdge))
        return Qt::SizeFDiagCursor;
    if (edges == (Qt::RightEdge | Qt::TopEdge) || edges == (Qt::LeftEdge | Qt::BottomEdge))
        return Qt::SizeBDiagCursor;
    return edges & (Qt::LeftEdge | Qt::RightEdge) ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

// From `low` to `high` of one axis, the part that the grip takes.
void takePart(bool atLow, bool atHigh, bool corner, int outside, int& low, int& high)
{
    const int reach = corner ? kCorner : kInside;
    if (atLow)
        high = low + reach - 1, low -= outside;
    else if (atHigh)
        low = high - reach + 1, high += outside;
    else
        low += kCorner, high -= kCorner;
}

} // namespace

EdgeGrip::EdgeGrip(Qt::Edges edges, QWidget* window) : QWidget(window), m_edges(edges)
{
    setCursor(cursorFor(edges));
    hide();
}

void EdgeGrip::place(const QRect& panel, int margin)
{
    const bool corner =
        (m_edges & (Qt::LeftEdge | Qt::RightEdge)) && (m_edges & (Qt::TopEdge | Qt::BottomEdge));
    const int outside = qMin(margin, kOutside);
    int left = panel.left(), right = panel.right(), top = panel.top(), bottom = panel.bottom();
    takePart(m_edges & Qt::LeftEdge, m_edges & Qt::RightEdge, corner, outside, left, right);
    takePart(m_edges & Qt::TopEdge, m_edges & Qt::BottomEdge, corner, outside, top, bottom);
    setGeometry(QRect(QPoint(left, top), QPoint(right, bottom)));
}

void EdgeGrip::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_pressedAt = event->globalPos();
    m_windowThen = window()->geometry();
    QWindow* handle = window()->windowHandle();
    m_dragging = !handle || !handle->startSystemResize(m_edges);
}

void EdgeGrip::mouseMoveEvent(QMouseEvent* event)
{
    if (m_dragging)
        window()->setGeometry(resized(event->globalPos() - m_pressedAt));
}

void EdgeGrip::mouseReleaseEvent(QMouseEvent*)
{
    m_dragging = false;
}

// The edge that is not dragged stays where it is, also at the limits of the size.
QRect EdgeGrip::resized(const QPoint& moved) const
{
    const QWidget* target = window();
    QSize low = target->minimumSize();
    if (target->layout())
        low = low.expandedTo(target->layout()->minimumSize());
    const QSize high = target->maximumSize().expandedTo(low);
    QRect rect = m_windowThen;
    if (m_edges & Qt::LeftEdge)
        rect.setLeft(rect.right() + 1 - qBound(low.width(), rect.width() - moved.x(), high.width()));
    if (m_edges & Qt::RightEdge)
        rect.setWidth(qBound(low.width(), rect.width() + moved.x(), high.width()));
    if (m_edges & Qt::TopEdge)
        rect.setTop(rect.bottom() + 1 - qBound(low.height(), rect.height() - moved.y(), high.height()));
    if (m_edges & Qt::BottomEdge)
        rect.setHeight(qBound(low.height(), rect.height() + moved.y(), high.height()));
    return rect;
}

} // namespace styled
