#pragma once

#include "ORBCustomObject.h"

#include <QDialog>

class ORBCustomTitleBar;

// A frameless top-level window with a title bar of its own, a drawn shadow and resizing at its edges. Behaves
// as a QDialog for modal use; Escape and Enter do not close it, every close goes through closeEvent().
class STYLEDCTL_API ORBCustomMainWindow : public QDialog, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomMainWindow(QWidget* parent = nullptr);
    ~ORBCustomMainWindow() override;

    ORBCustomTitleBar* cTitleBar() const;
    // Takes the widget over. The sizes of the window are those of the content with the title bar, without the
    // shadow.
    void cSetCentralWidget(QWidget* widget);
    QWidget* cCentralWidget() const;
    // A mask of ORBCustom::StretchEdge.
    void cSetStrechEdges(int edges);
    int cStrechEdges() const;
    void cEnableDefualtShadow();
    void cSetTitleVisible(bool visible);
    // Shows the window as a pop-up: it closes when the user clicks elsewhere or presses Escape.
    void cPopup();

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};
