#pragma once

#include "ORBCustomObject.h"

#include <QWidget>

// The bar on top of an ORBCustomMainWindow: icon, text, and the controls that were asked for. Moves the
// window when it is dragged; a double click maximises and restores when there is a control for that.
class STYLEDCTL_API ORBCustomTitleBar : public QWidget, public ORBCustomObject
{
    Q_OBJECT

public:
    enum Control
    {
        ControlMinimize = 1,
        ControlMaximize = 2,
        ControlClose = 4
    };

    explicit ORBCustomTitleBar(QWidget* parent = nullptr);
    ~ORBCustomTitleBar() override;

    void cSetTitleText(const QString& text);
    QString cTitleText() const;
    // A path or a resource name; without a picture the text moves up to the edge.
    void cSetTitleIcon(const QString& image);
    // A mask of Control; all three at start. Their object names: TitleMinimize, TitleMaximize, TitleClose.
    void cSetTitleControls(int controls);
    int cTitleControls() const;

    // The controls come after everything that the window holds now when the user tabs through it.
    void cPutLastInTabOrder();

    QSize sizeHint() const override;

protected:
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    class Private;
    void setTexts();
    void toggleMaximized();
    void dragWindow(const QPoint& globalPosition);
    std::unique_ptr<Private> d;
};
