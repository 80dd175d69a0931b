// The least of a window manager: it maps windows, lets them have the size that they ask for, and minimises
// and brings back. An X server alone does not minimise. Runs until its display closes.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstdio>

namespace
{

Display* g_display = nullptr;

Atom atom(const char* name)
{
    return XInternAtom(g_display, name, False);
}

// ICCCM 4.1.3.1.
void noteState(Window window, long state)
{
    const long data[] = {state, None};
    XChangeProperty(g_display, window, atom("WM_STATE"), atom("WM_STATE"), 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(data), 2);
}

void map(Window window)
{
    XMapWindow(g_display, window);
    noteState(window, NormalState);
}

void minimise(Window window)
{
    XUnmapWindow(g_display, window);
    noteState(window, IconicState);
}

void configure(const XConfigureRequestEvent& wanted)
{
    XWindowChanges changes = {wanted.x,     wanted.y,     wanted.width, wanted.height, wanted.border_width,
                              wanted.above, wanted.detail};
    XConfigureWindow(g_display, wanted.window, static_cast<unsigned>(wanted.value_mask), &changes);
}

// A window may be gone when it is asked for something: no reason to end.
int passOver(Display*, XErrorEvent*)
{
    return 0;
}

} // namespace

int main()
{
    g_display = XOpenDisplay(nullptr);
    if (!g_display)
        return 1;
    XSetErrorHandler(passOver);
    XSelectInput(g_display, DefaultRootWindow(g_display), SubstructureRedirectMask | SubstructureNotifyMask);
    XSync(g_display, False);
    std::puts("ready");
    std::fflush(stdout);
    for (;;) {
        XEvent event;
        XNextEvent(g_display, &event);
        if (event.type == MapRequest)
            map(event.xmaprequest.window);
        else if (event.type == ConfigureRequest)
            configure(event.xconfigurerequest);
        else if (event.type == ClientMessage && event.xclient.message_type == atom("WM_CHANGE_STATE") &&
                 event.xclient.data.l[0] == IconicState)
            minimise(event.xclient.window);
    }
}
