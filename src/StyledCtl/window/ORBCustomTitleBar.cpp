#include <StyledCtl/ORBCustomTitleBar.h>

#include "StyledCtl/style/Theme.h"
#include "StyledCtl/window/TitleButton.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

using styled::TitleButton;
using styled::TitleGlyph;

namespace
{

constexpr int kHeight = 36;
constexpr int kIconSize = 18;
constexpr int kLeftMargin = 12;
constexpr int kIconGap = 8;

} // namespace

class ORBCustomTitleBar::Private
{
public:
    enum Drag
    {
        NoDrag,
        Pressed, // not far enough yet
        Moving   // by this class; the window system has taken over otherwise
    };

    QString text;
    QIcon icon;
    int controls = ControlMinimize | ControlMaximize | ControlClose;
    TitleButton* minimize = nullptr;
    TitleButton* maximize = nullptr;
    TitleButton* close = nullptr;
    Drag drag = NoDrag;
    QPoint pressedAt; // global
    QPoint windowAt;  // where the window was then
};

ORBCustomTitleBar::ORBCustomTitleBar(QWidget* parent)
    : QWidget(parent), ORBCustomObject(this), d(std::make_unique<Private>())
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    d->minimize = new TitleButton(TitleGlyph::Minimize, this);
    d->minimize->setObjectName("TitleMinimize");
    d->maximize = new TitleButton(TitleGlyph::Maximize, this);
    d->maximize->setObjectName("TitleMaximize");
    d->close = new TitleButton(TitleGlyph::Close, this);
    d->close->setObjectName("TitleClose");

    QHBoxLayout* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 1, 1, 0); // leaves the window's border alone
    layout->setSpacing(0);
    layout->addStretch();
    for (TitleButton* button : {d->minimize, d->maximize, d->close})
        layout->addWidget(button);

    connect(d->minimize, &QAbstractButton::clicked, this, [this] { window()->showMinimized(); });
    connect(d->maximize, &QAbstractButton::clicked, this, &ORBCustomTitleBar::toggleMaximized);
    connect(d->close, &QAbstractButton::clicked, this, [this] { window()->close(); });
    if (parent)
        parent->window()->installEventFilter(this);
    setTexts();
}

ORBCustomTitleBar::~ORBCustomTitleBar() = default;

void ORBCustomTitleBar::cSetTitleText(const QString& text)
{
    d->text = text;
    setAccessibleName(text);
    update();
}

QString ORBCustomTitleBar::cTitleText() const
{
    return d->text;
}

void ORBCustomTitleBar::cSetTitleIcon(const QString& image)
{
    d->icon = QIcon(image);
    if (d->icon.availableSizes().isEmpty()) // a name without a picture behind it
        d->icon = QIcon();
    update();
}

void ORBCustomTitleBar::cSetTitleControls(int controls)
{
    d->controls = controls & (ControlMinimize | ControlMaximize | ControlClose);
    d->minimize->setVisible(controls & ControlMinimize);
    d->maximize->setVisible(controls & ControlMaximize);
    d->close->setVisible(controls & ControlClose);
}

int ORBCustomTitleBar::cTitleControls() const
{
    return d->controls;
}

void ORBCustomTitleBar::cPutLastInTabOrder()
{
    QWidget* last = window()->previousInFocusChain();
    while (last != window() && (last->focusPolicy() == Qt::NoFocus || isAncestorOf(last)))
        last = last->previousInFocusChain();
    // From the back: the order is a ring, in which the first button follows the last widget already, and Qt
    // moves nothing that does.
    for (TitleButton* button : {d->close, d->maximize, d->minimize})
        setTabOrder(last, button);
}

QSize ORBCustomTitleBar::sizeHint() const
{
    return QSize(QWidget::sizeHint().width() + 80, kHeight);
}

void ORBCustomTitleBar::setTexts()
{
    const bool maximized = window()->isMaximized();
    d->minimize->setCaption(tr("Minimize"));
    d->maximize->setCaption(maximized ? tr("Restore") : tr("Maximize"));
    d->maximize->setGlyph(maximized ? TitleGlyph::Restore : TitleGlyph::Maximize);
    d->close->setCaption(tr("Close"));
}

void ORBCustomTitleBar::toggleMaximized()
{
    if (window()->isMaximized())
        window()->showNormal();
    else
        window()->showMaximized();
}

void ORBCustomTitleBar::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        setTexts();
    QWidget::changeEvent(event);
}

bool ORBCustomTitleBar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == window() && event->type() == QEvent::WindowStateChange)
        setTexts();
    return QWidget::eventFilter(watched, event);
}

void ORBCustomTitleBar::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    d->drag = Private::Pressed;
    d->pressedAt = event->globalPos();
    d->windowAt = window()->pos();
}

void ORBCustomTitleBar::mouseMoveEvent(QMouseEvent* event)
{
    if (d->drag == Private::Pressed &&
        (event->globalPos() - d->pressedAt).manhattanLength() >= QApplication::startDragDistance()) {
        QWindow* handle = window()->windowHandle();
        d->drag = handle && handle->startSystemMove() ? Private::NoDrag : Private::Moving;
    }
    if (d->drag == Private::Moving)
        dragWindow(event->globalPos());
}

void ORBCustomTitleBar::dragWindow(const QPoint& globalPosition)
{
    QWidget* moved = window();
    if (moved->isMaximized()) {
        // The restored window comes to lie under the pointer, held at the same part of its width.
        const QPoint held = d->pressedAt - moved->pos();
        const double part = double(held.x()) / qMax(1, moved->width());
        moved->showNormal();
        d->windowAt = d->pressedAt - QPoint(int(part * moved->width()), held.y());
    }
    moved->move(d->windowAt + globalPosition - d->pressedAt);
}

void ORBCustomTitleBar::mouseReleaseEvent(QMouseEvent*)
{
    d->drag = Private::NoDrag;
}

void ORBCustomTitleBar::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && (d->controls & ControlMaximize))
        toggleMaximized();
}

void ORBCustomTitleBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    // One pixel is left to the window's border.
    cDrawFacet(painter, rect().adjusted(1, 1, -1, 0), QColor(), QColor(), ORBCustom::BorderNone, 0);
    int left = kLeftMargin;
    if (!d->icon.isNull()) {
        d->icon.paint(&painter, QRect(left, (height() - kIconSize) / 2, kIconSize, kIconSize));
        left += kIconSize + kIconGap;
    }
    int right = width();
    for (const TitleButton* button : {d->minimize, d->maximize, d->close})
        if (button->isVisible())
            right = qMin(right, button->x());
    const QRect place(left, 0, right - left - kIconGap, height());
    painter.setFont(cFont(cItemStatus()));
    painter.setPen(cTextColor(styled::themeColor("text")));
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(d->text, Qt::ElideRight, place.width()));
}
