#pragma once

#include "ORBCustomMainWindow.h"

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
