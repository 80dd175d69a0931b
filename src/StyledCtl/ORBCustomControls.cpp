#include <StyledCtl/ORBCustomControls.h>

#include "Glyphs.h"
#include "Theme.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

using styled::themeColor;

namespace
{

constexpr int kButtonPadding = 12;
constexpr int kButtonHeight = 26;
constexpr int kIconGap = 6;
constexpr int kCheckBoxGap = 8;

// A button knows best when it is down: by mouse, by keyboard or because it stays down.
int statusOf(const QAbstractButton* button)
{
    if (!button->isEnabled())
        return ORBCustom::StatusDisabled;
    if (button->isDown())
        return ORBCustom::StatusPressed;
    return button->underMouse() ? ORBCustom::StatusHover : ORBCustom::StatusNormal;
}

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

QColor ownTextColor(const QWidget* widget)
{
    return themeColor(widget->isEnabled() ? "text" : "textDisabled");
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
    return statusOf(this);
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
    painter.setPen(cTextColor(ownTextColor(this)));
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

ORBCustomLabel::ORBCustomLabel(QWidget* parent) : QLabel(parent), ORBCustomObject(this) {}

ORBCustomLabel::~ORBCustomLabel() = default;

void ORBCustomLabel::cStyleChanged()
{
    const QColor color = cFontColor(cItemStatus());
    if (color.isValid() && palette().color(QPalette::WindowText) != color) {
        QPalette changed = palette();
        changed.setColor(QPalette::WindowText, color); // in every colour group
        setPalette(changed);
    }
    ORBCustomObject::cStyleChanged();
}

void ORBCustomLabel::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(this);
        cDrawFacet(painter, rect(), QColor(), QColor(), ORBCustom::BorderNone, 0);
    }
    QLabel::paintEvent(event);
}

ORBCustomLineWidget::ORBCustomLineWidget(QWidget* parent) : QFrame(parent), ORBCustomObject(this)
{
    setFrameShape(QFrame::NoFrame);
    cSetLineType(0);
}

ORBCustomLineWidget::~ORBCustomLineWidget() = default;

void ORBCustomLineWidget::cSetLineType(int type)
{
    m_horizontal = type == 1;
    setSizePolicy(m_horizontal ? QSizePolicy::Expanding : QSizePolicy::Fixed,
                  m_horizontal ? QSizePolicy::Fixed : QSizePolicy::Expanding);
    updateGeometry();
}

QSize ORBCustomLineWidget::sizeHint() const
{
    return m_horizontal ? QSize(20, 1) : QSize(1, 20);
}

void ORBCustomLineWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    cDrawFacet(painter, rect(), themeColor("lineStrong"), QColor(), ORBCustom::BorderNone, 0);
}

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
    return statusOf(this);
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
    painter.setPen(cTextColor(ownTextColor(this)));
    const QRect textRect = rect().adjusted(box.right() + 1 + kCheckBoxGap, 0, 0, 0);
    style()->drawItemText(&painter, textRect, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic,
                          palette(), true, text());
    if (styled::showsFocus(this))
        styled::drawFocusRing(painter, rect(), styled::kControlRadius);
}
