#include <StyledCtl/ORBCustomCheckBox.h>

#include "StyledCtl/controls/ControlLook.h"
#include "StyledCtl/style/Glyphs.h"
#include "StyledCtl/style/Theme.h"

#include <QPainter>
#include <QStyle>

using styled::themeColor;

namespace
{

constexpr int kCheckBoxGap = 8;

} // namespace

ORBCustomCheckBox::ORBCustomCheckBox(QWidget* parent, int style)
    : QCheckBox(parent), ORBCustomObject(this), m_selector(style)
{
    setAttribute(Qt::WA_Hover);
}

ORBCustomCheckBox::~ORBCustomCheckBox() = default;

QSize ORBCustomCheckBox::sizeHint() const
{
    const QFontMetrics metrics(font());
    const QSize size = metrics.size(Qt::TextShowMnemonic, text());
    const int textWidth = text().isEmpty() ? 0 : kCheckBoxGap + size.width() + 4;
    return QSize(styled::kCheckBoxSize + textWidth + 4, qMax(styled::kCheckBoxSize + 4, size.height()));
}

QSize ORBCustomCheckBox::minimumSizeHint() const
{
    return sizeHint();
}

int ORBCustomCheckBox::cItemStatus() const
{
    return styled::statusOf(this);
}

bool ORBCustomCheckBox::hitButton(const QPoint& position) const
{
    return (m_selector == 1 ? rect() : QRect(QPoint(), sizeHint().expandedTo(QSize(0, height()))))
        .contains(position);
}

void ORBCustomCheckBox::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const int status = cItemStatus();
    const bool lit =
        m_selector == 1 && (status == ORBCustom::StatusHover || status == ORBCustom::StatusPressed);
    cDrawFacet(painter, rect(), lit ? themeColor("accentSoft") : QColor(), QColor(), ORBCustom::BorderNone,
               styled::kControlRadius);
    const QRect box(2, (height() - styled::kCheckBoxSize) / 2, styled::kCheckBoxSize, styled::kCheckBoxSize);
    styled::drawCheckBox(painter, box, checkState(), status);

    painter.setFont(cFont(status));
    painter.setPen(cTextColor(styled::ownTextColor(this)));
    const QRect textRect = rect().adjusted(box.right() + 1 + kCheckBoxGap, 0, 0, 0);
    style()->drawItemText(&painter, textRect, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic,
                          palette(), true, text());
    if (styled::showsFocus(this))
        styled::drawFocusRing(painter, rect(), styled::kControlRadius);
}
