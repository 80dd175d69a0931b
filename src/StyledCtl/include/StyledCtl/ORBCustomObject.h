// The style facet of every styled widget: colours, fonts and images by item status.
#pragma once

#include "StyledCtl.h"

#include <memory>

// Mixed into a widget class. The setters take effect at once; a status that was not set looks like the normal
// one.
class STYLEDCTL_API ORBCustomObject
{
public:
    explicit ORBCustomObject(QWidget* widget);
    virtual ~ORBCustomObject();
    ORBCustomObject(const ORBCustomObject&) = delete;
    ORBCustomObject& operator=(const ORBCustomObject&) = delete;

    void cSetBackgroundColor(const QColor& color, int itemStatus = ORBCustom::StatusNormal);
    // `edges`: an ORBCustom::BorderEdges value.
    void cSetBorderColor(const QColor& color, int edges = ORBCustom::BorderAll,
                         int itemStatus = ORBCustom::StatusNormal);
    void cSetFontColor(const QColor& color, int itemStatus = ORBCustom::StatusNormal);
    void cSetFont(const QFont& font, int itemStatus = ORBCustom::StatusNormal);
    void cSetFontSize(int pixels, int itemStatus = ORBCustom::StatusNormal);
    // A path or a resource name; drawn centred, sharp at any device pixel ratio.
    void cSetBackgroundImage(const QString& image, int itemStatus = ORBCustom::StatusNormal);

    QColor cBackgroundColor(int itemStatus = ORBCustom::StatusNormal) const;
    QColor cBorderColor(int itemStatus = ORBCustom::StatusNormal) const;
    int cBorderEdges(int itemStatus = ORBCustom::StatusNormal) const;
    QColor cFontColor(int itemStatus = ORBCustom::StatusNormal) const;
    QString cBackgroundImage(int itemStatus = ORBCustom::StatusNormal) const;

private:
    class Style;
    std::unique_ptr<Style> m_style;
};
