#pragma once

#include "ORBCustomMainWindow.h"

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
