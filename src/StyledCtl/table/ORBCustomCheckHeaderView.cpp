#include <StyledCtl/ORBCustomCheckHeaderView.h>
#include <StyledCtl/ORBCustomSortHeaderView.h>

#include "StyledCtl/style/Glyphs.h"

#include <QPainter>

#include <map>

namespace
{

constexpr int kPadding = 8;

} // namespace

class ORBCustomCheckHeaderView::Private
{
public:
    std::map<int, Qt::CheckState> states; // of the columns with a check box
};

ORBCustomCheckHeaderView::ORBCustomCheckHeaderView(QWidget* parent)
    : ORBCustomSortHeaderView(parent), d(std::make_unique<Private>())
{}

ORBCustomCheckHeaderView::~ORBCustomCheckHeaderView() = default;

void ORBCustomCheckHeaderView::setCheckBoxVisible(int column, bool visible)
{
    if (visible)
        d->states.emplace(column, Qt::Unchecked);
    else
        d->states.erase(column);
    viewport()->update();
}

Qt::CheckState ORBCustomCheckHeaderView::checkState(int column) const
{
    const auto found = d->states.find(column);
    return found == d->states.end() ? Qt::Unchecked : found->second;
}

void ORBCustomCheckHeaderView::setCheckState(int column, Qt::CheckState state, bool notify)
{
    const auto found = d->states.find(column);
    if (found == d->states.end())
        return;
    found->second = state;
    viewport()->update();
    if (notify)
        emit SigCheckStateChange(column);
}

bool ORBCustomCheckHeaderView::isClickable(int column) const
{
    return d->states.count(column) > 0 || ORBCustomSortHeaderView::isClickable(column);
}

void ORBCustomCheckHeaderView::clickSection(int column, const QPoint* position)
{
    const bool hasBox = d->states.count(column) > 0;
    const QRect section(sectionViewportPosition(column), 0, sectionSize(column), viewport()->height());
    const bool besideBox = isSortEnabled(column) && position && !boxRect(section, column).contains(*position);
    if (hasBox && !besideBox)
        setCheckState(column, checkState(column) == Qt::Checked ? Qt::Unchecked : Qt::Checked, true);
    else
        ORBCustomSortHeaderView::clickSection(column, position);
}

QRect ORBCustomCheckHeaderView::boxRect(const QRect& section, int column) const
{
    const bool alone = model() && model()->headerData(column, orientation()).toString().isEmpty();
    if (alone)
        return styled::centeredCheckBox(section);
    return styled::centeredCheckBox(
        QRect(section.left() + kPadding, section.top(), styled::kCheckBoxSize, section.height()));
}

QRect ORBCustomCheckHeaderView::textRect(const QRect& section, int column) const
{
    QRect rect = ORBCustomSortHeaderView::textRect(section, column);
    if (d->states.count(column) > 0)
        rect.setLeft(boxRect(section, column).right() + 1 + kPadding);
    return rect;
}

void ORBCustomCheckHeaderView::paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const
{
    ORBCustomSortHeaderView::paintSection(painter, rect, logicalIndex);
    if (d->states.count(logicalIndex) > 0)
        styled::drawCheckBox(*painter, boxRect(rect, logicalIndex), checkState(logicalIndex),
                             sectionStatus(logicalIndex));
}
