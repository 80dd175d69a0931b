#include <StyledCtl/ORBCustomMessageBox.h>

#include "StyledCtl/dialogs/DialogKeys.h"
#include "StyledCtl/dialogs/HintPicture.h"
#include "StyledCtl/dialogs/HookCall.h"

#include <StyledCtl/ORBCustomLabel.h>
#include <StyledCtl/ORBCustomPushButton.h>
#include <StyledCtl/ORBCustomTitleBar.h>

#include <QEvent>
#include <QGridLayout>
#include <QPlainTextEdit>
#include <QPointer>

namespace
{

constexpr int kTextWidth = 360;

styled::HintGlyph glyphOf(int hintIconStyle)
{
    return hintIconStyle == 1   ? styled::HintGlyph::Warning
           : hintIconStyle == 2 ? styled::HintGlyph::Error
                                : styled::HintGlyph::Information;
}

} // namespace

class ORBCustomMessageBox::Private
{
public:
    QString title;
    styled::HintPicture* picture = nullptr;
    ORBCustomLabel* content = nullptr;
    QPlainTextEdit* detail = nullptr;
    ORBCustomPushButton* unfold = nullptr;
    ORBCustomPushButton* cancel = nullptr;
    ORBCustomPushButton* ok = nullptr;
};

int ORBCustomMessageBox::simple(QWidget* parent, const QString& content, const QString& detail,
                                const QString& title, int hintIconStyle, bool withCancel)
{
    ORBCustom::DialogRequest request;
    request.kind = ORBCustom::DialogRequest::MessageBox;
    request.parent = parent;
    request.title = title;
    request.text = content;
    request.detail = detail;
    request.hintIconStyle = hintIconStyle;
    request.flag = withCancel;
    const ORBCustom::DialogAnswer answer = styled::askHook(request);
    if (answer.answered)
        return answer.result;

    // The parent may go while the box is open.
    const QPointer<ORBCustomMessageBox> box = new ORBCustomMessageBox(parent);
    box->fill(content, detail, title, hintIconStyle, withCancel);
    const int result = box->exec();
    delete box;
    return result;
}

ORBCustomMessageBox::ORBCustomMessageBox(QWidget* parent)
    : ORBCustomMainWindow(parent), d(std::make_unique<Private>())
{
    cEnableDefualtShadow();
    cTitleBar()->cSetTitleControls(ORBCustomTitleBar::ControlClose);

    QWidget* central = new QWidget(this);
    d->picture = new styled::HintPicture(styled::HintGlyph::Information, central);
    d->content = new ORBCustomLabel(central);
    d->content->setObjectName("MessageText");
    d->content->setTextFormat(Qt::PlainText);
    d->content->setWordWrap(true);
    d->detail = new QPlainTextEdit(central);
    d->detail->setObjectName("MessageDetail");
    d->detail->setReadOnly(true);
    d->detail->setTabChangesFocus(true);
    d->detail->setFixedHeight(120);
    d->detail->hide();
    d->unfold = new ORBCustomPushButton(central, 1);
    d->unfold->setObjectName("MessageUnfold");
    d->unfold->setCheckable(true);
    d->cancel = new ORBCustomPushButton(central);
    d->cancel->setObjectName("MessageCancel");
    d->ok = new ORBCustomPushButton(central, 2);
    d->ok->setObjectName("MessageOk");

    QHBoxLayout* buttons = new QHBoxLayout;
    buttons->setSpacing(10);
    buttons->addWidget(d->unfold);
    buttons->addStretch();
    for (ORBCustomPushButton* button : {d->cancel, d->ok}) {
        button->setMinimumWidth(76);
        buttons->addWidget(button);
    }
    QGridLayout* layout = new QGridLayout(central);
    layout->setContentsMargins(24, 14, 24, 20);
    layout->setHorizontalSpacing(16);
    layout->setVerticalSpacing(16);
    layout->addWidget(d->picture, 0, 0, Qt::AlignTop);
    layout->addWidget(d->content, 0, 1, Qt::AlignVCenter);
    layout->addWidget(d->detail, 1, 0, 1, 2);
    layout->addLayout(buttons, 2, 0, 1, 2);
    d->content->setMinimumWidth(kTextWidth);
    cSetCentralWidget(central);

    connect(d->unfold, &QAbstractButton::toggled, this, &ORBCustomMessageBox::unfoldDetail);
    connect(d->cancel, &QAbstractButton::clicked, this, &QDialog::reject);
    connect(d->ok, &QAbstractButton::clicked, this, &QDialog::accept);
}

ORBCustomMessageBox::~ORBCustomMessageBox() = default;

void ORBCustomMessageBox::fill(const QString& content, const QString& detail, const QString& title,
                               int hintIconStyle, bool withCancel)
{
    d->title = title;
    d->picture->setGlyph(glyphOf(hintIconStyle));
    d->content->setText(content);
    d->detail->setPlainText(detail);
    d->unfold->setVisible(!detail.isEmpty());
    d->cancel->setVisible(withCancel);
    setTexts();
    setAccessibleDescription(content);
    cFitContents();
    d->ok->setFocus();
}

void ORBCustomMessageBox::setTexts()
{
    cTitleBar()->cSetTitleText(d->title.isEmpty() ? tr("Prompt") : d->title);
    setWindowTitle(cTitleBar()->cTitleText());
    d->ok->setText(tr("OK"));
    d->cancel->setText(tr("Cancel"));
    d->unfold->setText(d->unfold->isChecked() ? tr("Hide details") : tr("Show details"));
    d->detail->setAccessibleName(tr("Details"));
}

void ORBCustomMessageBox::unfoldDetail(bool unfold)
{
    d->detail->setVisible(unfold);
    setTexts();
    cFitContents();
}

void ORBCustomMessageBox::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        setTexts();
    ORBCustomMainWindow::changeEvent(event);
}

void ORBCustomMessageBox::keyPressEvent(QKeyEvent* event)
{
    if (!styled::closeByKey(this, event))
        ORBCustomMainWindow::keyPressEvent(event);
}
