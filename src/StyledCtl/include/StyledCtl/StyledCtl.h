// The suite's styled widgets: what every header of this library shares. User-interface thread only.
#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QtGlobal>

#if defined(STYLEDCTL_BUILD_LIBRARY) || !defined(Q_OS_WIN)
#define STYLEDCTL_API Q_DECL_EXPORT
#else
#define STYLEDCTL_API Q_DECL_IMPORT // connect() tells signals by their address, which is the library's then
#endif

namespace ORBCustom
{

enum Language
{
    LanguageChinese = 0,
    LanguageEnglish = 1
};

// What a widget looks like in each of these is set on its own.
enum ItemStatus
{
    StatusNormal = 0,
    StatusHover = 1,
    StatusPressed = 2,
    StatusDisabled = 3
};

// Which edges of a widget get a border.
enum BorderEdges
{
    BorderNone = 0,
    BorderBottom = 1,
    BorderTopAndBottom = 2,
    BorderAll = 3, // corners as the kind of widget has them: hardly rounded
    BorderAllRounded = 4
};

// Edges and corners at which a frameless window can be resized.
enum StretchEdge
{
    StretchLeft = 1,
    StretchRight = 2,
    StretchTop = 4,
    StretchBottom = 8,
    StretchTopLeft = 16,
    StretchTopRight = 32,
    StretchBottomLeft = 64,
    StretchBottomRight = 128
};

// Where windows get a drawn shadow and rounded corners. Read when a window is made.
enum Shadows
{
    ShadowsWhereBlended, // screens that blend half-transparent windows; at start
    ShadowsAlways,
    ShadowsNever
};

STYLEDCTL_API void setShadows(Shadows shadows);

// Process-wide; governs the default fonts, at once in windows that exist. The texts of the library follow the
// installed translators.
STYLEDCTL_API void setLanguage(Language language);
STYLEDCTL_API Language currentLanguage();

// What windows are written in: 12 pixels high, Lato where it is there.
STYLEDCTL_API QFont defaultFont();

// Font colours of the styles 0 (strong), 1 (text), 2 (hint); any other acts as 1.
STYLEDCTL_API QColor fontColor(int style);

} // namespace ORBCustom
