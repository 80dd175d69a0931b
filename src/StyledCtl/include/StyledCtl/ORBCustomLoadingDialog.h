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
