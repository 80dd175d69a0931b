#pragma once

#include "ORBCustomObject.h"

#include <QDialog>

class ORBCustomTitleBar;

// A frameless top-level window with a title bar of its own, a drawn shadow and resizing at its edges. Behaves
// as a QDialog for modal use; Escape and Enter do not close it, every close goes through closeEvent().
//
// Its sizes are those of the content with the title bar, without the shadow: the operations below that are
// named like QWidget's stand in front of them. Through a QWidget pointer, and for positions, the shadow's
// margin is part of the window where there is one.
class STYLEDCTL_API ORBCustomMainWindow : public QDialog, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomMainWindow(QWidget* parent = nullptr);
    ~ORBCustomMainWindow() override;

    ORBCustomTitleBar* cTitleBar() const;
    // Takes the widget over and deletes the one before.
    void cSetCentralWidget(QWidget* widget);
    QWidget* cCentralWidget() const;
    // A mask of ORBCustom::StretchEdge; none at start.
    void cSetStrechEdges(int edges);
    int cStrechEdges() const;
    // A shadow where the screen can show one, else a thin border. Before the window is shown.
    void cEnableDefualtShadow();
    void cSetTitleVisible(bool visible);
    // Shows the window as a pop-up, as high as what it holds: it closes when the user clicks elsewhere (that
    // click does nothing else) or presses Escape.
    void cPopup();

    void resize(int width, int height);
    void resize(const QSize& size);
    QSize size() const;
    int width() const;
    int height() const;
    void setMinimumSize(const QSize& size);
    void setMinimumSize(int width, int height);
    void setMinimumWidth(int width);
    void setMinimumHeight(int height);
    QSize minimumSize() const;
    int minimumWidth() const;
    int minimumHeight() const;

protected:
    // As large as what it holds now, also when something in it was just hidden.
    void cFitContents();
    void cStyleChanged() override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    class Private;
    QRect panelRect() const;
    bool isRounded() const;
    void applyMargin();
    void placeGrips();
    std::unique_ptr<Private> d;
};
