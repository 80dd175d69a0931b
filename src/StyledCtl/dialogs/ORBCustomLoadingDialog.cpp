#include <StyledCtl/ORBCustomLoadingDialog.h>

#include "StyledCtl/style/Glyphs.h"

#include <StyledCtl/ORBCustomLabel.h>
#include <StyledCtl/ORBCustomTitleBar.h>

#include <QCloseEvent>
#include <QPainter>
#include <QTimerEvent>
#include <QVBoxLayout>

namespace
{

constexpr int kFrameMs = 30;
constexpr int kTurnMs = 1200;

// Turns only while it can be seen.
class BusyRing : public QWidget
{
public:
    explicit BusyRing(QWidget* parent) : QWidget(parent) { setFixedSize(48, 48); }

protected:
    void showEvent(QShowEvent*) override { m_timer = startTimer(kFrameMs); }
    void hideEvent(QHideEvent*) override
    {
        killTimer(m_timer);
        m_timer = 0;
    }
    void timerEvent(QTimerEvent*) override
    {
        m_elapsed = (m_elapsed + kFrameMs) % kTurnMs;
        update();
    }
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        styled::drawBusyRing(painter, QRectF(rect()).adjusted(2, 2, -2, -2), qreal(m_elapsed) / kTurnMs);
    }

private:
    int m_timer = 0;
    int m_elapsed = 0;
};

} // namespace

class ORBCustomLoadingDialog::Private
{
public:
    QString text;
    ORBCustomLabel* label = nullptr;
};

ORBCustomLoadingDialog::ORBCustomLoadingDialog(QWidget* parent)
    : ORBCustomMainWindow(parent), d(std::make_unique<Private>())
{
    cSetTitleVisible(false);
    cSetBackgroundColor(palette().color(QPalette::Base));
    cEnableDefualtShadow();
    QWidget* central = new QWidget(this);
    QVBoxLayout* layout = new QVBoxLayout(central);
    layout->setContentsMargins(40, 28, 40, 24);
    layout->setSpacing(16);
    BusyRing* ring = new BusyRing(central);
    ring->setObjectName("BusyRing");
    layout->addWidget(ring, 0, Qt::AlignHCenter);
    d->label = new ORBCustomLabel(central);
    d->label->setObjectName("LoadingText");
    d->label->setTextFormat(Qt::PlainText);
    d->label->setAlignment(Qt::AlignCenter);
    // Readable also while the window behind it, and with it everything below, is disabled.
    d->label->cSetFontColor(ORBCustom::fontColor(0));
    layout->addWidget(d->label);
    central->setMinimumWidth(220);
    cSetCentralWidget(central);
    showText();
}

ORBCustomLoadingDialog::~ORBCustomLoadingDialog() = default;

void ORBCustomLoadingDialog::SetLabelText(const QString& text)
{
    d->text = text;
    showText();
}

QString ORBCustomLoadingDialog::LabelText() const
{
    return d->label->text();
}

void ORBCustomLoadingDialog::showText()
{
    d->label->setText(d->text.isEmpty() ? tr("Please wait...") : d->text);
    setWindowTitle(d->label->text());
    setAccessibleName(d->label->text());
    cFitContents();
}

void ORBCustomLoadingDialog::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        showText();
    ORBCustomMainWindow::changeEvent(event);
}

void ORBCustomLoadingDialog::closeEvent(QCloseEvent* event)
{
    // Closing by hand comes from the window system, close() from the program.
    if (event->spontaneous())
        event->ignore();
    else
        ORBCustomMainWindow::closeEvent(event);
}
