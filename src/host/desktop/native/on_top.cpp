#include <algorithm>

#include "host/desktop/log.h"
#include "host/desktop/native/x11.h"
#include "host/host.h"

namespace host::desktop::native {

namespace {

// ns; does not flood a window manager that refuses
constexpr uint64_t kRaiseEvery = 500'000'000;

void TellRefused() {
    if (!g_main.told) Log("host: the window manager does not keep the window above others\n");
    g_main.told = true;
}

// A window manager that does not know the state leaves it as it was set, without effect.
void CheckKnown() {
    if (g_main.checked || !g_main.managed || !g_main.mapped) return;
    g_main.checked = true;
    const std::vector<unsigned long> known =
        ReadProperty(RootWindow(fl_display, fl_screen), g_atoms.supported, XA_ATOM);
    if (std::find(known.begin(), known.end(), g_atoms.above) == known.end()) TellRefused();
}

}  // namespace

bool IsManaged() {
    return !ReadProperty(RootWindow(fl_display, fl_screen), g_atoms.check, XA_WINDOW).empty();
}

void ReadAbove() {
    const std::vector<unsigned long> states = ReadProperty(g_main.id, g_atoms.state, XA_ATOM);
    g_main.above = std::find(states.begin(), states.end(), g_atoms.above) != states.end();
}

void KeepOnTop(Fl_Window*) {
    if (!g_main.topmost || g_main.id == None) return;
    CheckKnown();
    const bool lost = g_main.managed ? !g_main.above : g_main.covered;
    if (!lost) return;
    const uint64_t now = Nanoseconds();
    if (now - g_main.last_raise < kRaiseEvery) return;
    if (g_main.managed && g_main.last_raise) TellRefused();
    g_main.last_raise = now;
    if (!g_main.managed) {
        XRaiseWindow(fl_display, g_main.id);
        return;
    }
    constexpr long kAdd = 1, kFromApplication = 1;
    SendToRoot(g_atoms.state, {kAdd, static_cast<long>(g_atoms.above), 0, kFromApplication});
}

}  // namespace host::desktop::native
