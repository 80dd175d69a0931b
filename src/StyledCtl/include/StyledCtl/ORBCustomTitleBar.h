#pragma once

#include "ORBCustomObject.h"

#include <QWidget>

// The bar on top of an ORBCustomMainWindow: icon, text, and the controls that were asked for.
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
    void cSetTitleIcon(const QString& image);
    // A mask of Control; all three at start.
    void cSetTitleControls(int controls);
    int cTitleControls() const;

private:
    class Private;
    std::unique_ptr<Private> d;
};
