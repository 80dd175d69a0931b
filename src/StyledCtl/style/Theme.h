// The colours and the style sheet of the theme in use.
#pragma once

#include <QColor>
#include <QHash>
#include <QPalette>
#include <QString>

namespace styled
{

class Theme
{
public:
    static const Theme& current();

    // `name` as the theme's file has it; a name that is missing there is a defect and gives magenta.
    QColor color(const char* name) const;
    // Rules for the standard widgets, colours filled in.
    QString styleSheet() const { return m_styleSheet; }
    QPalette palette() const;

private:
    explicit Theme(const QString& file);

    QHash<QString, QColor> m_colors;
    QString m_styleSheet;
};

// Gives the application the theme's palette, the default font and pictures as fine as the screen, at the
// first call; what the application sets later stands. (A window that has a style sheet passes neither on to
// what lies in it, so they are set here.)
void dressApplication();
// The default font again, after it changed.
void refreshFont();

inline QColor themeColor(const char* name)
{
    return Theme::current().color(name);
}

} // namespace styled
