// The formats in which desktops write down how they look. Pure functions over text from outside: whatever is
// damaged is left out.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace host::desktop {

using Settings = std::map<std::string, std::string>;

// The texts and whole numbers of the property _XSETTINGS_SETTINGS, by name, such as `Gtk/FontName`.
Settings ParseXSettings(std::string_view bytes);

// `key=value` lines by `section/key`.
Settings ParseIni(std::string_view text);

// The colours that a GTK 3 theme defines, by name, 0xRRGGBB: `@define-color theme_bg_color #F6F5F4;`. Names
// of earlier colours are resolved; functions are not.
std::map<std::string, uint32_t> ParseThemeColors(std::string_view css);

// `#rgb`, `#rrggbb`, `#rrggbbaa`, `rgb(r, g, b)`, or `r,g,b`; 0xRRGGBB.
std::optional<uint32_t> ParseColor(std::string_view text);

struct FontName {
    std::string family;  // empty: none
    double points = 0;   // 0: none
};
// `Noto Sans, Bold 10`, with or without the comma; styles are left out.
FontName ParseFontName(std::string_view text);

}  // namespace host::desktop
