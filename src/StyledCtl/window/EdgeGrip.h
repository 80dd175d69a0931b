#pragma once

#include <QWidget>

namespace styled
{

// A strip along an edge or a square at a corner of a frameless window, laid over what the window holds, by
// which the window is resized.
class EdgeGrip : public QWidget
{
    Q_OBJECT

public:
    EdgeGrip(Qt::Edges edges, QWidget* window);

    Qt::Edges edges() const { return m_edges; }
    // `panel`: what is seen of the window; the grip reaches into the margin around it.
    void place(const QRect& panel, int margin);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QRect resized(const QPoint& moved) const;

    const Qt::Edges m_edges;
    bool m_dragging = false; // by this class; the window system has taken over otherwise
    QPoint m_pressedAt;      // global
    QRect m_windowThen;
};

} // namespace styled
