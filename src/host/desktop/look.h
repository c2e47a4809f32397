// How dialogs look: like the desktop's own, as far as it says how those look.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host::desktop {

// What the running desktop says: in X settings, in the GTK settings file, in KDE's, in its GTK theme, and by
// its portal.
struct DesktopLook {
    std::string font;   // a family; empty: none
    int text_size = 0;  // device pixels; 0: none
    // 0xRRGGBB
    uint32_t window = 0xF6F5F4, text = 0x2E3436, list = 0xFFFFFF, list_text = 0x000000, marked = 0x3584E4,
             marked_text = 0xFFFFFF;
};
bool IsDark(uint32_t color);

// Reads the desktop's settings again and gives all widgets their look. Waits a moment for the portal's first
// answer; a late one changes what is open. Costs files and round trips, so only what opens a dialog calls it.
void ApplyLook();

// The height of dialog text in device pixels: the desktop's, otherwise 13 times the scale.
int LookTextSize();

// A colour between two. part: 0 to 1, of the second.
uint32_t MixColors(uint32_t first, uint32_t second, float part);

// The property of the X settings manager; empty when none runs.
std::string ReadXSettings();

}  // namespace host::desktop
