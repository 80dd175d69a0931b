#include "StyledCtl/style/Theme.h"

#include <StyledCtl/StyledCtl.h>

#include <QApplication>
#include <QFile>
#include <QRegularExpression>
#include <QWidget>

namespace styled
{

namespace
{

bool g_dressed = false;

} // namespace

void dressApplication()
{
    if (g_dressed)
        return;
    g_dressed = true;
    // Without it pictures are made for ordinary screens, and drawn larger on fine ones.
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication::setPalette(Theme::current().palette());
    refreshFont();
}

void refreshFont()
{
    if (!g_dressed)
        return;
    QApplication::setFont(ORBCustom::defaultFont());
    // Below a style sheet a widget keeps the font that it was made with, until its own part of it is set
    // again.
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets)
        widget->setFont(widget->font());
}

const Theme& Theme::current()
{
    static const Theme theme(QStringLiteral(":/StyledCtl/themes/light.qss"));
    return theme;
}

Theme::Theme(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning("The theme %s is missing.", qUtf8Printable(fileName));
        return;
    }
    m_styleSheet = QString::fromUtf8(file.readAll());

    static const QRegularExpression definition(QStringLiteral("^@(\\w+):\\s*(#[0-9A-Fa-f]+);\\s*$"),
                                               QRegularExpression::MultilineOption);
    for (auto it = definition.globalMatch(m_styleSheet); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        m_colors.insert(match.captured(1), QColor(match.captured(2)));
    }
    m_styleSheet.remove(definition);
    for (auto it = m_colors.cbegin(); it != m_colors.cend(); ++it)
        m_styleSheet.replace(QRegularExpression('@' + it.key() + "\\b"), it.value().name());
}

QColor Theme::color(const char* name) const
{
    const auto found = m_colors.constFind(QLatin1String(name));
    if (found != m_colors.constEnd())
        return *found;
    qWarning("The theme has no colour %s.", name);
    return Qt::magenta;
}

QPalette Theme::palette() const
{
    QPalette palette;
    palette.setColor(QPalette::Window, color("window"));
    palette.setColor(QPalette::Base, color("surface"));
    palette.setColor(QPalette::AlternateBase, color("surfaceAlternate"));
    palette.setColor(QPalette::Button, color("control"));
    palette.setColor(QPalette::ToolTipBase, color("surface"));
    palette.setColor(QPalette::Highlight, color("accentSoft"));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                            QPalette::HighlightedText}) {
        palette.setColor(role, color("text"));
        palette.setColor(QPalette::Disabled, role, color("textDisabled"));
    }
    return palette;
}

} // namespace styled
