#include "StyledCtl/style/Screen.h"

#include <StyledCtl/StyledCtl.h>

#include <QGuiApplication>
#include <QLibrary>

namespace
{

ORBCustom::Shadows g_shadows = ORBCustom::ShadowsWhereBlended;

// X11 tells by the owner of a selection whether a compositing manager runs. Looked up at run time: the
// library needs no X11 otherwise.
bool x11Composites()
{
    QLibrary x11(QStringLiteral("X11"), 6);
    const auto openDisplay = reinterpret_cast<void* (*)(const char*)>(x11.resolve("XOpenDisplay"));
    const auto closeDisplay = reinterpret_cast<int (*)(void*)>(x11.resolve("XCloseDisplay"));
    const auto defaultScreen = reinterpret_cast<int (*)(void*)>(x11.resolve("XDefaultScreen"));
    const auto internAtom =
        reinterpret_cast<unsigned long (*)(void*, const char*, int)>(x11.resolve("XInternAtom"));
    const auto selectionOwner =
        reinterpret_cast<unsigned long (*)(void*, unsigned long)>(x11.resolve("XGetSelectionOwner"));
    if (!openDisplay || !closeDisplay || !defaultScreen || !internAtom || !selectionOwner)
        return false;
    void* display = openDisplay(nullptr);
    if (!display)
        return false;
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(defaultScreen(display));
    const bool composites = selectionOwner(display, internAtom(display, name.constData(), 0)) != 0;
    closeDisplay(display);
    return composites;
}

bool platformBlends()
{
    const QString platform = QGuiApplication::platformName();
    if (platform == "xcb")
        return x11Composites();
    return platform == "windows" || platform == "cocoa" || platform.startsWith("wayland");
}

} // namespace

void ORBCustom::setShadows(Shadows shadows)
{
    g_shadows = shadows;
}

bool styled::screenBlends()
{
    if (g_shadows != ORBCustom::ShadowsWhereBlended)
        return g_shadows == ORBCustom::ShadowsAlways;
    static const bool blends = platformBlends();
    return blends;
}
