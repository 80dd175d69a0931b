#include <StyledCtl/ORBCustomPushButton.h>

#include "StyledCtl/controls/ControlLook.h"
#include "StyledCtl/style/Glyphs.h"
#include "StyledCtl/style/Theme.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

using styled::themeColor;

namespace
{

constexpr int kButtonPadding = 12;
constexpr int kButtonHeight = 26;
constexpr int kIconGap = 6;

struct ButtonLook
{
    const char* background;
    const char* border;
};

ButtonLook buttonLook(int selector, int status)
{
    // Rows: framed, flat, standing out. Columns: normal, hover, pressed, disabled.
    static const ButtonLook looks[3][4] = {
        {{"control", "lineStrong"},
         {"controlHover", "accentLine"},
         {"controlPressed", "accentLine"},
         {"controlDisabled", "line"}},
        {{nullptr, nullptr}, {"titleHover", nullptr}, {"titlePressed", nullptr}, {nullptr, nullptr}},
        {{"accent", "accentLine"},
         {"accentHover", "accentLine"},
         {"accentPressed", "accentLine"},
         {"controlDisabled", "line"}}};
    return looks[selector][status];
}

QColor colorOrNone(const char* name)
{
    return name ? themeColor(name) : QColor();
}

} // namespace

ORBCustomPushButton::ORBCustomPushButton(QWidget* parent, int style)
    : QPushButton(parent), ORBCustomObject(this), m_selector(style >= 0 && style <= 2 ? style : 0)
{
    setAttribute(Qt::WA_Hover);
}

ORBCustomPushButton::~ORBCustomPushButton() = default;

void ORBCustomPushButton::cSetControlClickEvent(bool control)
{
    m_controlsClicks = control;
}

QSize ORBCustomPushButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    int width = metrics.size(Qt::TextShowMnemonic, text()).width() + 2 * kButtonPadding;
    if (!icon().isNull())
        width += iconSize().width() + kIconGap;
    return QSize(width, qMax(kButtonHeight, metrics.height() + 8));
}

QSize ORBCustomPushButton::minimumSizeHint() const
{
    return sizeHint();
}

int ORBCustomPushButton::cItemStatus() const
{
    return styled::statusOf(this);
}

void ORBCustomPushButton::mousePressEvent(QMouseEvent* event)
{
    if (m_controlsClicks)
        QPushButton::mousePressEvent(event);
    else
        event->ignore();
}

void ORBCustomPushButton::mouseMoveEvent(QMouseEvent* event)
{
    if (m_controlsClicks)
        QPushButton::mouseMoveEvent(event);
    else
        event->ignore();
}

void ORBCustomPushButton::mouseReleaseEvent(QMouseEvent* event)
{
    if (m_controlsClicks)
        QPushButton::mouseReleaseEvent(event);
    else
        event->ignore();
}

void ORBCustomPushButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const ButtonLook look = buttonLook(m_selector, cItemStatus());
    cDrawFacet(painter, rect(), colorOrNone(look.background), colorOrNone(look.border), ORBCustom::BorderAll,
               styled::kControlRadius);
    drawContents(painter);
    if (styled::showsFocus(this))
        styled::drawFocusRing(painter, rect(), styled::kControlRadius);
}

void ORBCustomPushButton::drawContents(QPainter& painter)
{
    painter.setFont(cFont(cItemStatus()));
    painter.setPen(cTextColor(styled::ownTextColor(this)));
    QRect contents = rect().adjusted(4, 0, -4, 0);
    if (!icon().isNull()) {
        const int textWidth = painter.fontMetrics().size(Qt::TextShowMnemonic, text()).width();
        const int gap = textWidth > 0 ? kIconGap : 0;
        const int left =
            contents.left() + qMax(0, (contents.width() - iconSize().width() - gap - textWidth) / 2);
        const QRect place(QPoint(left, (height() - iconSize().height()) / 2), iconSize());
        icon().paint(&painter, place, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
        contents.setLeft(place.right() + 1 + gap);
        contents.setWidth(textWidth);
    }
    style()->drawItemText(&painter, contents, Qt::AlignCenter | Qt::TextShowMnemonic, palette(), true,
                          text());
}
