#include <algorithm>
#include <cstdlib>
#include <string>

#include "host/desktop/native/x11.h"
#include "host/host.h"

// A launcher shows a busy pointer from the press until the program tells that it has started:
// freedesktop.org's startup notification, a text in client messages of 20 bytes to the root window.
namespace host::desktop::native {

namespace {

std::string EndingOf(const std::string& launch) {
    std::string text = "remove: ID=\"";
    for (const char c : launch) {
        if (c == '"' || c == '\\') text += '\\';
        text += c;
    }
    return text + '"';
}

void Broadcast(Display* display, const std::string& text) {
    const Window root = DefaultRootWindow(display);
    const Window from = XCreateSimpleWindow(display, root, -1, -1, 1, 1, 0, 0, 0);  // tells senders apart
    XEvent message = {};
    message.xclient.type = ClientMessage;
    message.xclient.window = from;
    message.xclient.format = 8;
    message.xclient.message_type = XInternAtom(display, "_NET_STARTUP_INFO_BEGIN", False);
    constexpr size_t kPart = sizeof message.xclient.data.b;
    for (size_t at = 0; at <= text.size(); at += kPart) {  // the NUL too
        std::fill_n(message.xclient.data.b, kPart, '\0');
        std::copy_n(text.data() + at, std::min(kPart, text.size() - at), message.xclient.data.b);
        XSendEvent(display, root, False, PropertyChangeMask, &message);
        message.xclient.message_type = XInternAtom(display, "_NET_STARTUP_INFO", False);
    }
    XDestroyWindow(display, from);
    XFlush(display);
}

}  // namespace

void EndLaunch(Display* display) {
    const char* launch = std::getenv("DESKTOP_STARTUP_ID");
    if (launch && *launch) Broadcast(display, EndingOf(launch));
}

}  // namespace host::desktop::native

void host::EndLaunch() {
    const char* launch = std::getenv("DESKTOP_STARTUP_ID");
    if (!launch || !*launch) return;
    Display* display = XOpenDisplay(nullptr);
    if (!display) return;
    desktop::native::EndLaunch(display);
    XCloseDisplay(display);
}
