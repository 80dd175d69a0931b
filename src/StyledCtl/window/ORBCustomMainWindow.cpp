#include <StyledCtl/ORBCustomMainWindow.h>

#include "StyledCtl/style/Glyphs.h"
#include "StyledCtl/style/Screen.h"
#include "StyledCtl/style/Theme.h"
#include "StyledCtl/window/EdgeGrip.h"

#include <StyledCtl/ORBCustomTitleBar.h>

#include <QBitmap>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <vector>

using styled::EdgeGrip;
using styled::themeColor;

namespace
{

constexpr int kShadowMargin = 14;

const struct
{
    int flag;
    Qt::Edges edges;
} kGrips[] = {{ORBCustom::StretchLeft, Qt::LeftEdge},
              {ORBCustom::StretchRight, Qt::RightEdge},
              {ORBCustom::StretchTop, Qt::TopEdge},
              {ORBCustom::StretchBottom, Qt::BottomEdge},
              {ORBCustom::StretchTopLeft, Qt::TopEdge | Qt::LeftEdge},
              {ORBCustom::StretchTopRight, Qt::TopEdge | Qt::RightEdge},
              {ORBCustom::StretchBottomLeft, Qt::BottomEdge | Qt::LeftEdge},
              {ORBCustom::StretchBottomRight, Qt::BottomEdge | Qt::RightEdge}};

// Windows without a parent are applications' own; the others belong to them as dialogs.
Qt::WindowFlags flagsFor(const QWidget* parent)
{
    return (parent ? Qt::Dialog : Qt::Window) | Qt::FramelessWindowHint | Qt::WindowSystemMenuHint |
           Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint;
}

QSize grown(const QSize& size, int margin)
{
    return size + QSize(2 * margin, 2 * margin);
}

} // namespace

class ORBCustomMainWindow::Private
{
public:
    ORBCustomTitleBar* titleBar = nullptr;
    QWidget* central = nullptr;
    QVBoxLayout* layout = nullptr;
    std::vector<EdgeGrip*> grips;
    int stretchEdges = 0;
    int shadowMargin = 0; // what the shadow takes while the window does not fill the screen
    int margin = 0;       // what it takes now
};

ORBCustomMainWindow::ORBCustomMainWindow(QWidget* parent)
    : QDialog(parent, flagsFor(parent)), ORBCustomObject(this), d(std::make_unique<Private>())
{
    styled::dressApplication();
    // Windows below another one get the rules from there.
    if (!parent || !qobject_cast<ORBCustomMainWindow*>(parent->window()))
        setStyleSheet(styled::Theme::current().styleSheet());
    d->titleBar = new ORBCustomTitleBar(this);
    d->layout = new QVBoxLayout(this);
    d->layout->setContentsMargins(0, 0, 0, 0);
    d->layout->setSpacing(0);
    d->layout->addWidget(d->titleBar);
    for (const auto& grip : kGrips)
        d->grips.push_back(new EdgeGrip(grip.edges, this));
}

ORBCustomMainWindow::~ORBCustomMainWindow() = default;

ORBCustomTitleBar* ORBCustomMainWindow::cTitleBar() const
{
    return d->titleBar;
}

void ORBCustomMainWindow::cSetCentralWidget(QWidget* widget)
{
    if (widget == d->central)
        return;
    delete d->central;
    d->central = widget;
    if (widget)
        d->layout->addWidget(widget, 1);
    placeGrips();
}

QWidget* ORBCustomMainWindow::cCentralWidget() const
{
    return d->central;
}

void ORBCustomMainWindow::cSetStrechEdges(int edges)
{
    d->stretchEdges = edges;
    placeGrips();
}

int ORBCustomMainWindow::cStrechEdges() const
{
    return d->stretchEdges;
}

void ORBCustomMainWindow::cEnableDefualtShadow()
{
    if (d->shadowMargin > 0 || !styled::screenBlends())
        return;
    const QSize seen = size();
    const QSize least = minimumSize();
    setAttribute(Qt::WA_TranslucentBackground);
    d->shadowMargin = kShadowMargin;
    applyMargin();
    if (least.width() > 0 || least.height() > 0)
        setMinimumSize(least);
    if (testAttribute(Qt::WA_Resized))
        resize(seen);
}

void ORBCustomMainWindow::cSetTitleVisible(bool visible)
{
    d->titleBar->setVisible(visible);
}

void ORBCustomMainWindow::cPopup()
{
    if (windowType() != Qt::Popup) {
        setWindowFlags(Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint);
        setAttribute(Qt::WA_NoMouseReplay);
    }
    ensurePolished();
    d->layout->activate();
    QWidget::resize(QWidget::width(), d->layout->sizeHint().height());
    show();
    focusNextChild();
}

void ORBCustomMainWindow::resize(int width, int height)
{
    resize(QSize(width, height));
}

void ORBCustomMainWindow::resize(const QSize& size)
{
    QDialog::resize(grown(size, d->margin));
}

QSize ORBCustomMainWindow::size() const
{
    return grown(QDialog::size(), -d->margin);
}

int ORBCustomMainWindow::width() const
{
    return size().width();
}

int ORBCustomMainWindow::height() const
{
    return size().height();
}

void ORBCustomMainWindow::setMinimumSize(const QSize& size)
{
    QDialog::setMinimumSize(grown(size, d->shadowMargin));
}

void ORBCustomMainWindow::setMinimumSize(int width, int height)
{
    setMinimumSize(QSize(width, height));
}

void ORBCustomMainWindow::setMinimumWidth(int width)
{
    QDialog::setMinimumWidth(width + 2 * d->shadowMargin);
}

void ORBCustomMainWindow::setMinimumHeight(int height)
{
    QDialog::setMinimumHeight(height + 2 * d->shadowMargin);
}

QSize ORBCustomMainWindow::minimumSize() const
{
    return grown(QDialog::minimumSize(), -d->shadowMargin).expandedTo(QSize(0, 0));
}

int ORBCustomMainWindow::minimumWidth() const
{
    return minimumSize().width();
}

int ORBCustomMainWindow::minimumHeight() const
{
    return minimumSize().height();
}

void ORBCustomMainWindow::cFitContents()
{
    // From the inside out: each layout forgets its old size only now.
    if (d->central && d->central->layout())
        d->central->layout()->activate();
    d->layout->activate();
    adjustSize();
}

QRect ORBCustomMainWindow::panelRect() const
{
    return rect().adjusted(d->margin, d->margin, -d->margin, -d->margin);
}

bool ORBCustomMainWindow::isRounded() const
{
    return cBorderColor().isValid() && cBorderEdges() == ORBCustom::BorderAllRounded;
}

// A window that fills the screen has no shadow.
void ORBCustomMainWindow::applyMargin()
{
    d->margin = isMaximized() || isFullScreen() ? 0 : d->shadowMargin;
    d->layout->setContentsMargins(d->margin, d->margin, d->margin, d->margin);
    placeGrips();
    update();
}

void ORBCustomMainWindow::placeGrips()
{
    const bool resizable = !isMaximized() && !isFullScreen();
    for (std::size_t i = 0; i < d->grips.size(); ++i) {
        d->grips[i]->setVisible(resizable && (d->stretchEdges & kGrips[i].flag));
        d->grips[i]->place(panelRect(), d->margin);
        d->grips[i]->raise();
    }
}

void ORBCustomMainWindow::cStyleChanged()
{
    if (isRounded() && !testAttribute(Qt::WA_WState_Created) && styled::screenBlends())
        setAttribute(Qt::WA_TranslucentBackground);
    ORBCustomObject::cStyleChanged();
}

void ORBCustomMainWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::WindowStateChange)
        applyMargin();
    QDialog::changeEvent(event);
}

void ORBCustomMainWindow::keyPressEvent(QKeyEvent* event)
{
    // Not QDialog's: there Escape would hide the window without asking closeEvent(), and Enter press a
    // button.
    QWidget::keyPressEvent(event); // NOLINT(bugprone-parent-virtual-call)
}

void ORBCustomMainWindow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect panel = panelRect();
    const bool blended = testAttribute(Qt::WA_TranslucentBackground);
    const bool filling = isMaximized() || isFullScreen();
    const qreal radius = blended && !filling ? styled::kPanelRadius : 0;
    if (d->margin > 0)
        styled::drawShadow(painter, panel, d->margin, radius);
    const bool needsEdge = d->margin == 0 && !filling;
    cDrawFacet(painter, panel, themeColor("window"), needsEdge ? themeColor("lineStrong") : QColor(),
               ORBCustom::BorderAll, radius);
}

void ORBCustomMainWindow::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    placeGrips();
    // Without blending, round corners can only be cut out.
    if (isRounded() && !testAttribute(Qt::WA_TranslucentBackground)) {
        QBitmap shape(QDialog::size());
        shape.clear();
        QPainter painter(&shape);
        painter.setBrush(Qt::color1);
        painter.drawRoundedRect(rect().adjusted(0, 0, -1, -1), styled::kPanelRadius, styled::kPanelRadius);
        painter.end();
        setMask(shape);
    }
}

void ORBCustomMainWindow::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    placeGrips();
    d->titleBar->cPutLastInTabOrder();
}
