#include "host/desktop/input_method.h"

#include <FL/Fl.H>
#include <FL/Fl_Window.H>
#include <FL/x.H>

#include <clocale>

#if FL_API_VERSION < 10400

// FLTK 1.3 filters and looks up the keys of the focused window through this context. Whenever the focus moves
// to another window it creates a new one from the input method that the display was opened with. It exports
// the variable but declares it nowhere.
extern XIC fl_xim_ic;

namespace host::desktop {
namespace {

InputMethod* g_innermost = nullptr;
XIM g_method = nullptr;
XIC g_toolkit = nullptr;  // FLTK's own, which ours replaces

bool IsOurs(XIC context) {
    return context && g_method && XIMOfIC(context) == g_method;
}

// Without any context FLTK switches to another way of looking up keys, for good.
void GiveBack() {
    fl_xim_ic = g_toolkit;
    g_toolkit = nullptr;
}

// The input method's contexts are gone too.
void OnMethodGone(XIM, XPointer, XPointer) {
    if (IsOurs(fl_xim_ic)) GiveBack();
    g_method = nullptr;
}

// Input methods depend on the user's locale; the program itself stays in "C".
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

// FLTK destroys a context that it replaces or drops.
void GiveContext(Window window) {
    if (!g_method || IsOurs(fl_xim_ic)) return;
    XIC context = XCreateIC(g_method, XNInputStyle, XIMPreeditNothing | XIMStatusNothing, XNClientWindow,
                            window, XNFocusWindow, window, nullptr);
    if (!context) return;
    if (g_toolkit) XDestroyIC(g_toolkit);
    g_toolkit = fl_xim_ic;
    if (g_toolkit) XUnsetICFocus(g_toolkit);  // otherwise it takes the keys first
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

#else

// Later versions keep their context to themselves, and their own input method with it.
namespace host::desktop {

InputMethod::InputMethod(Fl_Window* window) : m_window(window), m_outer(nullptr) {}
InputMethod::~InputMethod() = default;

}  // namespace host::desktop

#endif
