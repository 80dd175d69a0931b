#include <StyledCtl/ORBCustomSaveDoneHintDlg.h>

#include "StyledCtl/dialogs/DialogKeys.h"
#include "StyledCtl/dialogs/HintPicture.h"
#include "StyledCtl/dialogs/HookCall.h"
#include "StyledCtl/style/Theme.h"

#include <StyledCtl/ORBCustomCheckBox.h>
#include <StyledCtl/ORBCustomLabel.h>
#include <StyledCtl/ORBCustomPushButton.h>
#include <StyledCtl/ORBCustomTitleBar.h>

#include <QDesktopServices>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QGridLayout>
#include <QLineEdit>
#include <QUrl>

namespace
{

QString folderOf(const QString& path)
{
    const QFileInfo info(QDir::fromNativeSeparators(path));
    return info.isDir() ? info.absoluteFilePath() : info.absolutePath();
}

bool showInDesktop(QWidget* parent, const QString& folder)
{
    ORBCustom::DialogRequest request;
    request.kind = ORBCustom::DialogRequest::OpenFolder;
    request.parent = parent;
    request.path = folder;
    const ORBCustom::DialogAnswer answer = styled::askHook(request);
    return answer.answered ? answer.result != 0 : QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

} // namespace

class ORBCustomSaveDoneHintDlg::Private
{
public:
    QString title;
    QString openText;
    ORBCustomLabel* text = nullptr;
    QLineEdit* path = nullptr;
    ORBCustomLabel* trouble = nullptr;
    ORBCustomCheckBox* notAgain = nullptr;
    ORBCustomPushButton* open = nullptr;
    ORBCustomPushButton* ok = nullptr;
    bool offersNotAgain = false;
};

ORBCustomSaveDoneHintDlg::ORBCustomSaveDoneHintDlg(QWidget* parent, const QString& title,
                                                   const QString& openText)
    : ORBCustomMainWindow(parent), d(std::make_unique<Private>())
{
    d->title = title;
    d->openText = openText;
    cEnableDefualtShadow();
    cTitleBar()->cSetTitleControls(ORBCustomTitleBar::ControlClose);

    QWidget* central = new QWidget(this);
    d->text = new ORBCustomLabel(central);
    d->text->setObjectName("SaveDoneText");
    d->text->setTextFormat(Qt::PlainText);
    d->text->setWordWrap(true);
    d->path = new QLineEdit(central);
    d->path->setObjectName("SaveDonePath");
    d->path->setReadOnly(true);
    d->trouble = new ORBCustomLabel(central);
    d->trouble->setObjectName("SaveDoneTrouble");
    d->trouble->cSetFontColor(styled::themeColor("error"));
    d->trouble->hide();
    d->notAgain = new ORBCustomCheckBox(central);
    d->notAgain->setObjectName("SaveDoneNotAgain");
    d->notAgain->hide();
    d->open = new ORBCustomPushButton(central);
    d->open->setObjectName("SaveDoneOpen");
    d->ok = new ORBCustomPushButton(central, 2);
    d->ok->setObjectName("SaveDoneOk");
    d->ok->setMinimumWidth(76);

    QHBoxLayout* buttons = new QHBoxLayout;
    buttons->setSpacing(10);
    buttons->addWidget(d->notAgain);
    buttons->addStretch();
    buttons->addWidget(d->open);
    buttons->addWidget(d->ok);
    QGridLayout* layout = new QGridLayout(central);
    layout->setContentsMargins(24, 14, 24, 20);
    layout->setHorizontalSpacing(16);
    layout->setVerticalSpacing(10);
    layout->addWidget(new styled::HintPicture(styled::HintGlyph::Done, central), 0, 0, 2, 1, Qt::AlignTop);
    layout->addWidget(d->text, 0, 1);
    layout->addWidget(d->path, 1, 1);
    layout->addWidget(d->trouble, 2, 1);
    layout->setRowMinimumHeight(3, 6);
    layout->addLayout(buttons, 4, 0, 1, 2);
    central->setMinimumWidth(440);
    cSetCentralWidget(central);

    connect(d->open, &QAbstractButton::clicked, this, &ORBCustomSaveDoneHintDlg::openFolder);
    connect(d->ok, &QAbstractButton::clicked, this, &QDialog::accept);
    setTexts();
}

ORBCustomSaveDoneHintDlg::~ORBCustomSaveDoneHintDlg() = default;

void ORBCustomSaveDoneHintDlg::SetMsgText(const QString& text, const QString& path, bool showAgainBox)
{
    d->text->setText(text);
    d->path->setText(path);
    d->path->setToolTip(path);
    d->path->setCursorPosition(0);
    d->path->setVisible(!path.isEmpty());
    d->open->setVisible(!path.isEmpty());
    d->offersNotAgain = showAgainBox;
    d->notAgain->setVisible(showAgainBox);
    d->trouble->hide();
}

bool ORBCustomSaveDoneHintDlg::IsNotShownAgain() const
{
    return d->notAgain->isChecked();
}

int ORBCustomSaveDoneHintDlg::exec()
{
    ORBCustom::DialogRequest request;
    request.kind = ORBCustom::DialogRequest::SaveDone;
    request.parent = parentWidget();
    request.title = cTitleBar()->cTitleText();
    request.text = d->text->text();
    request.path = d->path->text();
    request.flag = d->offersNotAgain;
    const ORBCustom::DialogAnswer answer = styled::askHook(request);
    if (answer.answered)
        return answer.result;
    setEnabled(true);
    cFitContents();
    d->ok->setFocus();
    return ORBCustomMainWindow::exec();
}

void ORBCustomSaveDoneHintDlg::setTexts()
{
    cTitleBar()->cSetTitleText(d->title.isEmpty() ? tr("Prompt") : d->title);
    setWindowTitle(cTitleBar()->cTitleText());
    d->open->setText(d->openText.isEmpty() ? tr("Open folder") : d->openText);
    d->ok->setText(tr("OK"));
    d->path->setAccessibleName(tr("Saved as"));
    d->notAgain->setText(tr("Do not show this again"));
    d->trouble->setText(tr("The folder could not be opened."));
}

void ORBCustomSaveDoneHintDlg::openFolder()
{
    d->trouble->setVisible(!showInDesktop(this, folderOf(d->path->text())));
    cFitContents();
}

void ORBCustomSaveDoneHintDlg::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        setTexts();
    ORBCustomMainWindow::changeEvent(event);
}

void ORBCustomSaveDoneHintDlg::keyPressEvent(QKeyEvent* event)
{
    if (!styled::closeByKey(this, event))
        ORBCustomMainWindow::keyPressEvent(event);
}
