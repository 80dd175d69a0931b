// The style facet of every styled widget: colours, fonts and images by item status.
#pragma once

#include "StyledCtl.h"

#include <QIcon>

#include <memory>

class QPainter;

// Mixed into a widget class. The setters take effect at once. A status that was not set looks like the normal
// one; controls that can be used are drawn fainter while they are disabled.
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

    // Invalid, empty or ORBCustom::BorderAll where nothing was set.
    QColor cBackgroundColor(int itemStatus = ORBCustom::StatusNormal) const;
    QColor cBorderColor(int itemStatus = ORBCustom::StatusNormal) const;
    int cBorderEdges(int itemStatus = ORBCustom::StatusNormal) const;
    QColor cFontColor(int itemStatus = ORBCustom::StatusNormal) const;
    QString cBackgroundImage(int itemStatus = ORBCustom::StatusNormal) const;
    // The widget's own font with what was set.
    QFont cFont(int itemStatus = ORBCustom::StatusNormal) const;
    bool cHasFont() const;

protected:
    // An ORBCustom::ItemStatus.
    virtual int cItemStatus() const;
    // After a setter, and when the status may have changed. Sets the font and repaints.
    virtual void cStyleChanged();

    // The background, border and image of the status as it is now.
    void cDrawFacet(QPainter& painter, const QRect& rect, const QColor& ownBackground,
                    const QColor& ownBorder, int ownEdges, qreal radius) const;
    // The caller's font colour, or the widget's own.
    QColor cTextColor(const QColor& ownColor) const;

private:
    class Style;
    std::unique_ptr<Style> m_style;
};
