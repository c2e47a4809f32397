#include <FL/Fl.H>
#include <FL/x.H>

#include "host/desktop/look.h"

namespace host::desktop {

std::string ReadXSettings() {
    constexpr long kMost = 1 << 16;  // in 32-bit units
    std::string bytes;
    const std::string name = "_XSETTINGS_S" + std::to_string(fl_screen);
    const Window owner = XGetSelectionOwner(fl_display, XInternAtom(fl_display, name.c_str(), False));
    if (owner == None) return bytes;
    const Atom settings = XInternAtom(fl_display, "_XSETTINGS_SETTINGS", False);
    Atom type;
    int format;
    unsigned long count = 0, left;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(fl_display, owner, settings, 0, kMost, False, settings, &type, &format, &count,
                           &left, &data) == Success &&
        data) {
        if (format == 8) bytes.assign(reinterpret_cast<const char*>(data), count);
        XFree(data);
    }
    return bytes;
}

}  // namespace host::desktop
