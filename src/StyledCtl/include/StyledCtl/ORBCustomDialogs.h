// The suite's dialogs.
#pragma once

#include "ORBCustomMainWindow.h"

// A busy dialog without a way to close it by hand. close() may be called from inside its own exec(), which
// then returns; the same object may be run again.
class STYLEDCTL_API ORBCustomLoadingDialog : public ORBCustomMainWindow
{
    Q_OBJECT

public:
    explicit ORBCustomLoadingDialog(QWidget* parent = nullptr);
    ~ORBCustomLoadingDialog() override;

    // Empty: the library's own text.
    void SetLabelText(const QString& text);
    QString LabelText() const;

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    class Private;
    void showText();
    std::unique_ptr<Private> d;
};

// Tells that something was saved, and where; opens the folder on request. Can be used also while its parent
// is disabled.
class STYLEDCTL_API ORBCustomSaveDoneHintDlg : public ORBCustomMainWindow
{
    Q_OBJECT

public:
    // Empty texts: the library's own title and its own text of the button that opens the folder.
    ORBCustomSaveDoneHintDlg(QWidget* parent, const QString& title, const QString& openText);
    ~ORBCustomSaveDoneHintDlg() override;

    // `path`: a file or a folder. `showAgainBox`: offers not to be shown again.
    void SetMsgText(const QString& text, const QString& path, bool showAgainBox);
    // Whether the user asked for that.
    bool IsNotShownAgain() const;

    int exec() override;

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    class Private;
    void setTexts();
    void openFolder();
    std::unique_ptr<Private> d;
};

class STYLEDCTL_API ORBCustomMessageBox : public ORBCustomMainWindow
{
    Q_OBJECT

public:
    // A modal message, in plain text. An empty title takes the library's own; a detail is folded away behind
    // a button. Hint styles: 0 information, 1 warning, 2 error. `withCancel`: a second button. Gives
    // QDialog::Accepted or Rejected. Can be used also while its parent is disabled.
    static int simple(QWidget* parent, const QString& content, const QString& detail, const QString& title,
                      int hintIconStyle, bool withCancel);
    ~ORBCustomMessageBox() override;

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    explicit ORBCustomMessageBox(QWidget* parent);
    class Private;
    void fill(const QString& content, const QString& detail, const QString& title, int hintIconStyle,
              bool withCancel);
    void setTexts();
    void unfoldDetail(bool unfold);
    std::unique_ptr<Private> d;
};
