#include <StyledCtl/ORBCustomSortHeaderView.h>

#include "StyledCtl/style/Glyphs.h"
#include "StyledCtl/style/Theme.h"

#include <QHoverEvent>
#include <QKeyEvent>
#include <QPainter>

#include <set>

using styled::themeColor;

namespace
{

constexpr int kPadding = 8;
constexpr int kArrowRoom = 14;
constexpr int kMinimumSection = 28;

} // namespace

class ORBCustomSortHeaderView::Private
{
public:
    std::set<int> sortable;
    QPoint pressedAt;
    int pressedSection = -1;
    int hoveredSection = -1;
    int focusedSection = -1; // what the keyboard is at
    int arrowAt = -1;        // before the press
    Qt::SortOrder arrowOrder = Qt::AscendingOrder;
    bool pressed = false;
};

ORBCustomSortHeaderView::ORBCustomSortHeaderView(QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent), ORBCustomObject(this), d(std::make_unique<Private>())
{
    setSectionsClickable(true);
    setHighlightSections(false);
    setMinimumSectionSize(kMinimumSection);
    setSortIndicator(-1, Qt::AscendingOrder);
    setFocusPolicy(Qt::TabFocus);
    viewport()->setAttribute(Qt::WA_Hover);
    // Resizing by drag gives no click. A double click is two clicks, of which the header tells one as such.
    connect(this, &QHeaderView::sectionClicked, this, [this](int column) {
        // The header has moved its arrow already, also to columns that do not sort: back to where it was.
        setSortIndicator(d->arrowAt, d->arrowOrder);
        clickSection(column, &d->pressedAt);
    });
    connect(this, &QHeaderView::sectionDoubleClicked, this,
            [this](int column) { clickSection(column, &d->pressedAt); });
    setTexts();
}

ORBCustomSortHeaderView::~ORBCustomSortHeaderView() = default;

void ORBCustomSortHeaderView::enableSort(int column, bool enable)
{
    if (enable)
        d->sortable.insert(column);
    else
        d->sortable.erase(column);
    viewport()->update();
}

bool ORBCustomSortHeaderView::isSortEnabled(int column) const
{
    return d->sortable.count(column) > 0;
}

bool ORBCustomSortHeaderView::isPressed() const
{
    return d->pressed;
}

void ORBCustomSortHeaderView::clickSection(int column, const QPoint*)
{
    if (!isSortEnabled(column))
        return;
    const bool turns = sortIndicatorSection() == column && sortIndicatorOrder() == Qt::AscendingOrder;
    setSortIndicator(column, turns ? Qt::DescendingOrder : Qt::AscendingOrder);
    viewport()->update();
    emit SigSortByColumn(column, !turns);
}

bool ORBCustomSortHeaderView::isClickable(int column) const
{
    return isSortEnabled(column);
}

QRect ORBCustomSortHeaderView::textRect(const QRect& section, int column) const
{
    const bool arrow = isSortEnabled(column) && sortIndicatorSection() == column;
    return section.adjusted(kPadding, 0, arrow ? -kArrowRoom : -kPadding / 2, 0);
}

int ORBCustomSortHeaderView::sectionStatus(int column) const
{
    if (!isEnabled())
        return ORBCustom::StatusDisabled;
    if (!isClickable(column))
        return ORBCustom::StatusNormal;
    if (d->pressed && column == d->pressedSection)
        return ORBCustom::StatusPressed;
    return column == d->hoveredSection ? ORBCustom::StatusHover : ORBCustom::StatusNormal;
}

void ORBCustomSortHeaderView::paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const
{
    if (!rect.isValid())
        return;
    static const char* const fills[] = {"header", "headerHover", "headerPressed", "header"};
    const int status = sectionStatus(logicalIndex);
    const QColor ownFill = cBackgroundColor(status);
    const QColor ownText = cFontColor(status);
    const QColor ownLine = cBorderColor(status);
    const QColor line = ownLine.isValid() ? ownLine : themeColor("line");
    painter->save();
    painter->fillRect(rect, ownFill.isValid() ? ownFill : themeColor(fills[status]));
    painter->fillRect(QRect(rect.right(), rect.top() + 8, 1, rect.height() - 16), line);
    painter->fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1), line);

    const QColor textColor = ownText.isValid()
                                 ? ownText
                                 : themeColor(status == ORBCustom::StatusDisabled ? "textDisabled" : "text");
    painter->setFont(cFont(status));
    painter->setPen(textColor);
    const QRect place = textRect(rect, logicalIndex);
    const QString text = model() ? model()->headerData(logicalIndex, orientation()).toString() : QString();
    const QString shown = painter->fontMetrics().elidedText(text, Qt::ElideRight, place.width());
    painter->drawText(place, int(defaultAlignment()) | Qt::TextSingleLine, shown);
    if (isSortEnabled(logicalIndex) && sortIndicatorSection() == logicalIndex)
        styled::drawSortArrow(*painter, QPointF(rect.right() - kArrowRoom / 2.0, rect.center().y() + 0.5),
                              sortIndicatorOrder() == Qt::AscendingOrder, themeColor("focus"));
    if (styled::showsFocus(this) && logicalIndex == d->focusedSection)
        styled::drawFocusRing(*painter, rect, styled::kControlRadius);
    painter->restore();
}

void ORBCustomSortHeaderView::mousePressEvent(QMouseEvent* event)
{
    d->pressed = true;
    d->pressedAt = event->pos();
    d->pressedSection = logicalIndexAt(event->pos());
    d->arrowAt = sortIndicatorSection();
    d->arrowOrder = sortIndicatorOrder();
    QHeaderView::mousePressEvent(event);
    viewport()->update();
}

void ORBCustomSortHeaderView::mouseReleaseEvent(QMouseEvent* event)
{
    QHeaderView::mouseReleaseEvent(event);
    d->pressed = false;
    d->pressedSection = -1;
    viewport()->update();
}

bool ORBCustomSortHeaderView::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverMove)
        d->hoveredSection = logicalIndexAt(static_cast<QHoverEvent*>(event)->pos());
    else if (event->type() == QEvent::HoverLeave)
        d->hoveredSection = -1;
    return QHeaderView::viewportEvent(event);
}

void ORBCustomSortHeaderView::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        moveFocusedSection(-1);
        break;
    case Qt::Key_Right:
        moveFocusedSection(+1);
        break;
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (d->focusedSection >= 0 && !isSectionHidden(d->focusedSection))
            clickSection(d->focusedSection, nullptr);
        break;
    default:
        QHeaderView::keyPressEvent(event);
    }
}

// To the next section in sight that does something; stays where there is none.
void ORBCustomSortHeaderView::moveFocusedSection(int step)
{
    int visual = d->focusedSection >= 0 ? visualIndex(d->focusedSection) : -1;
    for (visual += step; visual >= 0 && visual < count(); visual += step) {
        const int section = logicalIndex(visual);
        if (!isSectionHidden(section) && isClickable(section)) {
            d->focusedSection = section;
            setAccessibleDescription(model()->headerData(section, orientation()).toString());
            break;
        }
    }
    viewport()->update();
}

void ORBCustomSortHeaderView::focusInEvent(QFocusEvent* event)
{
    QHeaderView::focusInEvent(event);
    if (d->focusedSection < 0 || isSectionHidden(d->focusedSection) || !isClickable(d->focusedSection)) {
        d->focusedSection = -1;
        moveFocusedSection(+1);
    }
    viewport()->update();
}

void ORBCustomSortHeaderView::focusOutEvent(QFocusEvent* event)
{
    QHeaderView::focusOutEvent(event);
    viewport()->update();
}

void ORBCustomSortHeaderView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        setTexts();
    QHeaderView::changeEvent(event);
}

void ORBCustomSortHeaderView::setTexts()
{
    setAccessibleName(tr("Column headers"));
}
