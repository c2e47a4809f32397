#include "host/desktop/input_method.h"

#if defined(_WIN32) || defined(__APPLE__)

namespace host::desktop {

// FLTK's own is enough.
InputMethod::InputMethod(Fl_Window* window) : m_window(window), m_outer(nullptr) {}
InputMethod::~InputMethod() = default;

}  // namespace host::desktop

#else

#include <FL/Fl.H>
#include <FL/Fl_Window.H>
#include <FL/x.H>

#include <clocale>

// FLTK 1.3 filters and looks up the keys of the window with the focus by this context, and makes one anew,
// from the input method that the display was opened with, whenever the focus goes to another window. It
// exports the variable but declares it nowhere.
extern XIC fl_xim_ic;

namespace host::desktop {
namespace {

InputMethod* g_innermost = nullptr;
XIM g_method = nullptr;
XIC g_toolkit = nullptr;  // FLTK's own, which ours stands for

bool IsOurs(XIC context) {
    return context && g_method && XIMOfIC(context) == g_method;
}

// FLTK looks keys up in another way, for good, when it has no context at all.
void GiveBack() {
    fl_xim_ic = g_toolkit;
    g_toolkit = nullptr;
}

// Its contexts are gone with it.
void OnMethodGone(XIM, XPointer, XPointer) {
    if (IsOurs(fl_xim_ic)) GiveBack();
    g_method = nullptr;
}

// Input methods go by the user's locale; the program itself keeps to "C".
void OpenMethod() {
    if (g_method) return;
    setlocale(LC_CTYPE, "");
    XSetLocaleModifiers("");
    g_method = XOpenIM(fl_display, nullptr, nullptr, nullptr);
    setlocale(LC_CTYPE, "C");
    if (!g_method) return;
    XIMCallback gone = {nullptr, OnMethodGone};
    XSetIMValues(g_method, XNDestroyCallback, &gone, nullptr);
}

// FLTK destroys a context that it replaces or gives up.
void GiveContext(Window window) {
    if (!g_method || IsOurs(fl_xim_ic)) return;
    XIC context = XCreateIC(g_method, XNInputStyle, XIMPreeditNothing | XIMStatusNothing, XNClientWindow,
                            window, XNFocusWindow, window, nullptr);
    if (!context) return;
    if (g_toolkit) XDestroyIC(g_toolkit);
    g_toolkit = fl_xim_ic;
    if (g_toolkit) XUnsetICFocus(g_toolkit);  // or it takes the keys first
    fl_xim_ic = context;
    XSetICFocus(context);
}

InputMethod* Find(Window window) {
    InputMethod* method = g_innermost;
    while (method && (!method->window()->shown() || fl_xid(method->window()) != window))
        method = method->outer();
    return method;
}

// Before FLTK sees the event.
int Watch(void* event, void*) {
    const XEvent& e = *static_cast<XEvent*>(event);
    const bool counts = e.type == FocusIn || e.type == KeyPress;
    if (counts && Find(e.xany.window)) GiveContext(e.xany.window);
    return 0;
}

}  // namespace

InputMethod::InputMethod(Fl_Window* window) : m_window(window), m_outer(g_innermost) {
    static bool watching = false;
    if (!watching) Fl::add_system_handler(Watch, nullptr);
    watching = true;
    OpenMethod();
    g_innermost = this;
}

InputMethod::~InputMethod() {
    g_innermost = m_outer;
    if (!IsOurs(fl_xim_ic)) return;
    XDestroyIC(fl_xim_ic);
    GiveBack();
}

}  // namespace host::desktop

#endif
