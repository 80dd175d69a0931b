#include <StyledCtl/ORBCustomObject.h>

#include "StyledCtl/style/Glyphs.h"
#include "StyledCtl/style/Theme.h"

#include <QEvent>
#include <QPainter>
#include <QWidget>

#include <array>
#include <optional>

namespace
{

struct Look
{
    QColor background;
    QColor border;
    QColor fontColor;
    std::optional<int> edges;
    std::optional<QFont> font;
    std::optional<int> fontSize;
    QString imageName;
    QIcon image;
};

// A disabled control shows its caller's colours, but fainter.
QColor fainter(QColor color)
{
    color.setAlphaF(color.alphaF() * 0.4);
    return color;
}

} // namespace

// Watches the widget for what changes its status.
class ORBCustomObject::Style : public QObject
{
public:
    Style(ORBCustomObject* object, QWidget* widget) : m_object(object), m_widget(widget)
    {
        widget->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
            m_pressed = true;
            m_object->cStyleChanged();
            break;
        case QEvent::MouseButtonRelease:
        case QEvent::Hide:
            m_pressed = false;
            m_object->cStyleChanged();
            break;
        case QEvent::Enter:
        case QEvent::Leave:
        case QEvent::EnabledChange:
            m_object->cStyleChanged();
            break;
        default:
            break;
        }
        return false;
    }

    int status() const
    {
        if (!m_widget->isEnabled())
            return ORBCustom::StatusDisabled;
        if (m_pressed)
            return ORBCustom::StatusPressed;
        return m_widget->underMouse() ? ORBCustom::StatusHover : ORBCustom::StatusNormal;
    }

    Look& of(int itemStatus) { return m_looks[index(itemStatus)]; }
    const Look& of(int itemStatus) const { return m_looks[index(itemStatus)]; }
    const Look& normal() const { return m_looks[ORBCustom::StatusNormal]; }
    QWidget* widget() const { return m_widget; }

    QColor color(QColor Look::*part, int itemStatus) const
    {
        const QColor& own = of(itemStatus).*part;
        return own.isValid() ? own : normal().*part;
    }

    // What is drawn: like color(), but fainter where only the normal colour stands in for the disabled one.
    QColor drawn(QColor Look::*part, int itemStatus) const
    {
        const QColor found = color(part, itemStatus);
        const bool stoodIn = itemStatus == ORBCustom::StatusDisabled && !(of(itemStatus).*part).isValid();
        return stoodIn && found.isValid() && m_widget->focusPolicy() != Qt::NoFocus ? fainter(found) : found;
    }

    bool hasFont() const
    {
        for (const Look& look : m_looks)
            if (look.font || look.fontSize)
                return true;
        return false;
    }

private:
    static std::size_t index(int itemStatus)
    {
        return itemStatus >= ORBCustom::StatusNormal && itemStatus <= ORBCustom::StatusDisabled
                   ? std::size_t(itemStatus)
                   : std::size_t(ORBCustom::StatusNormal);
    }

    ORBCustomObject* m_object;
    QWidget* m_widget;
    std::array<Look, 4> m_looks;
    bool m_pressed = false;
};

ORBCustomObject::ORBCustomObject(QWidget* widget) : m_style(std::make_unique<Style>(this, widget)) {}

ORBCustomObject::~ORBCustomObject() = default;

void ORBCustomObject::cSetBackgroundColor(const QColor& color, int itemStatus)
{
    m_style->of(itemStatus).background = color;
    cStyleChanged();
}

void ORBCustomObject::cSetBorderColor(const QColor& color, int edges, int itemStatus)
{
    m_style->of(itemStatus).border = color;
    m_style->of(itemStatus).edges = edges;
    cStyleChanged();
}

void ORBCustomObject::cSetFontColor(const QColor& color, int itemStatus)
{
    m_style->of(itemStatus).fontColor = color;
    cStyleChanged();
}

void ORBCustomObject::cSetFont(const QFont& font, int itemStatus)
{
    m_style->of(itemStatus).font = font;
    m_style->of(itemStatus).fontSize.reset();
    cStyleChanged();
}

void ORBCustomObject::cSetFontSize(int pixels, int itemStatus)
{
    if (pixels <= 0)
        return;
    m_style->of(itemStatus).fontSize = pixels;
    cStyleChanged();
}

void ORBCustomObject::cSetBackgroundImage(const QString& image, int itemStatus)
{
    m_style->of(itemStatus).imageName = image;
    m_style->of(itemStatus).image = QIcon(image);
    cStyleChanged();
}

QColor ORBCustomObject::cBackgroundColor(int itemStatus) const
{
    return m_style->color(&Look::background, itemStatus);
}

QColor ORBCustomObject::cBorderColor(int itemStatus) const
{
    return m_style->color(&Look::border, itemStatus);
}

int ORBCustomObject::cBorderEdges(int itemStatus) const
{
    return m_style->of(itemStatus).edges.value_or(m_style->normal().edges.value_or(ORBCustom::BorderAll));
}

QColor ORBCustomObject::cFontColor(int itemStatus) const
{
    return m_style->color(&Look::fontColor, itemStatus);
}

QString ORBCustomObject::cBackgroundImage(int itemStatus) const
{
    const QString& own = m_style->of(itemStatus).imageName;
    return own.isEmpty() ? m_style->normal().imageName : own;
}

QFont ORBCustomObject::cFont(int itemStatus) const
{
    const Look& look = m_style->of(itemStatus);
    const Look& normal = m_style->normal();
    QFont font = look.font ? *look.font : normal.font ? *normal.font : m_style->widget()->font();
    const std::optional<int> size = look.fontSize ? look.fontSize
                                    : look.font   ? std::nullopt
                                                  : normal.fontSize;
    if (size)
        font.setPixelSize(*size);
    return font;
}

bool ORBCustomObject::cHasFont() const
{
    return m_style->hasFont();
}

int ORBCustomObject::cItemStatus() const
{
    return m_style->status();
}

void ORBCustomObject::cStyleChanged()
{
    QWidget* widget = m_style->widget();
    if (cHasFont()) {
        const QFont font = cFont(cItemStatus());
        if (font != widget->font())
            widget->setFont(font);
    }
    widget->update();
}

void ORBCustomObject::cDrawFacet(QPainter& painter, const QRect& rect, const QColor& ownBackground,
                                 const QColor& ownBorder, int ownEdges, qreal radius) const
{
    const int status = cItemStatus();
    const QColor background = m_style->drawn(&Look::background, status);
    const QColor border = m_style->drawn(&Look::border, status);
    const int edges = border.isValid() ? cBorderEdges(status) : ownEdges;
    styled::drawBox(painter, rect, background.isValid() ? background : ownBackground,
                    border.isValid() ? border : ownBorder, edges,
                    edges == ORBCustom::BorderAllRounded ? styled::kPanelRadius : radius);
    const QIcon& own = m_style->of(status).image;
    const bool fallback = m_style->of(status).imageName.isEmpty();
    const QIcon& image = fallback ? m_style->normal().image : own;
    if (!image.isNull())
        styled::drawImage(painter, rect, image, !fallback || status != ORBCustom::StatusDisabled);
}

QColor ORBCustomObject::cTextColor(const QColor& ownColor) const
{
    const QColor color = m_style->drawn(&Look::fontColor, cItemStatus());
    return color.isValid() ? color : ownColor;
}
