#include "host/desktop/look.h"

#include <FL/Fl.H>
#include <FL/Fl_Window.H>
#include <FL/x.H>

#include <cstdio>
#include <cstdlib>
#include <deque>

#include "host/desktop/desktop.h"
#include "host/desktop/portal.h"
#include "host/desktop/scheme.h"
#include "host/desktop/settings_text.h"

namespace host::desktop {
namespace {

constexpr int kDefaultText = 13;          // device pixels at scale 1
constexpr int kPortalPatience = 60;       // ms
constexpr double kPortalEvery = 0.05;     // s
constexpr size_t kLongestFile = 4 << 20;  // bytes

constexpr uint32_t kDarkWindow = 0x353535, kDarkList = 0x2B2B2B, kDarkText = 0xEEEEEC;

DesktopLook g_look;

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string ReadSmallFile(const std::string& path) {
    std::string text;
    FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) return text;
    char part[4096];
    for (size_t n; text.size() < kLongestFile && (n = std::fread(part, 1, sizeof(part), file)) > 0;)
        text.append(part, n);
    std::fclose(file);
    return text;
}

std::string ConfigFolder() {
    const std::string set = Environment("XDG_CONFIG_HOME");
    return set.empty() || set[0] != '/' ? Environment("HOME") + "/.config" : set;
}

// By the names of X settings; a running settings manager wins over the file.
Settings ReadGtk() {
    constexpr const char* kNames[][2] = {{"Settings/gtk-font-name", "Gtk/FontName"},
                                         {"Settings/gtk-theme-name", "Net/ThemeName"},
                                         {"Settings/gtk-application-prefer-dark-theme", "dark"}};
    Settings settings = ParseXSettings(ReadXSettings());
    for (const char* folder : {"/gtk-3.0", "/gtk-4.0"}) {
        const Settings file = ParseIni(ReadSmallFile(ConfigFolder() + folder + "/settings.ini"));
        for (const auto& [key, name] : kNames) {
            const auto found = file.find(key);
            if (found != file.end()) settings.emplace(name, found->second);
        }
    }
    return settings;
}

double DotsPerInch(Settings* settings) {
    const double exact = std::atof((*settings)["Xft/DPI"].c_str()) / 1024;
    if (exact >= 48 && exact <= 480) return exact;
    const char* resource = XGetDefault(fl_display, "Xft", "dpi");
    const double dpi = resource ? std::atof(resource) : 0;
    return dpi >= 48 && dpi <= 480 ? dpi : 96;
}

void TakeFont(const std::string& name, double dpi, DesktopLook* look) {
    const FontName font = ParseFontName(name);
    look->font = font.family;
    if (font.points > 0) look->text_size = static_cast<int>(font.points * dpi / 72 + 0.5);
}

// In the order of the names that each desktop has for them.
constexpr uint32_t DesktopLook::*kPalette[] = {&DesktopLook::window, &DesktopLook::text,
                                               &DesktopLook::list,   &DesktopLook::list_text,
                                               &DesktopLook::marked, &DesktopLook::marked_text};
using PaletteNames = const char* const[std::size(kPalette)];

// Takes the palette only as a whole: half of one and half of another may be unreadable. find: the colour of a
// name, or none.
template <class Find>
bool TakeColors(const PaletteNames& names, DesktopLook* look, Find find) {
    DesktopLook taken = *look;
    for (size_t i = 0; i < std::size(kPalette); ++i) {
        const std::optional<uint32_t> color = find(names[i]);
        if (!color) return false;
        taken.*kPalette[i] = *color;
    }
    *look = taken;
    return true;
}

bool TakeKde(const Settings& settings, DesktopLook* look) {
    constexpr PaletteNames kNames = {
        "Colors:Window/BackgroundNormal",    "Colors:Window/ForegroundNormal",
        "Colors:View/BackgroundNormal",      "Colors:View/ForegroundNormal",
        "Colors:Selection/BackgroundNormal", "Colors:Selection/ForegroundNormal"};
    return TakeColors(kNames, look, [&](const char* name) -> std::optional<uint32_t> {
        const auto at = settings.find(name);
        return at == settings.end() ? std::nullopt : ParseColor(at->second);
    });
}

bool TakeTheme(const std::string& css, DesktopLook* look) {
    constexpr PaletteNames kNames = {"theme_bg_color",          "theme_fg_color",
                                     "theme_base_color",        "theme_text_color",
                                     "theme_selected_bg_color", "theme_selected_fg_color"};
    const std::map<std::string, uint32_t> colors = ParseThemeColors(css);
    return TakeColors(kNames, look, [&](const char* name) {
        const auto at = colors.find(name);
        return at == colors.end() ? std::optional<uint32_t>() : at->second;
    });
}

// The colours of an installed theme; the theme that GTK has built in has no file.
bool FindTheme(const std::string& name, bool dark, DesktopLook* look) {
    if (name.empty() || name.find('/') != name.npos || name[0] == '.') return false;
    const std::string home = Environment("HOME");
    for (const std::string& folder :
         {home + "/.local/share/themes/", home + "/.themes/", std::string("/usr/local/share/themes/"),
          std::string("/usr/share/themes/")}) {
        for (const char* file : {dark ? "/gtk-3.0/gtk-dark.css" : "/gtk-3.0/gtk.css", "/gtk-3.0/gtk.css"}) {
            DesktopLook found = *look;
            if (!TakeTheme(ReadSmallFile(folder + name + file), &found) || IsDark(found.window) != dark)
                continue;
            *look = found;
            return true;
        }
    }
    return false;
}

bool IsDarkName(std::string name) {
    for (char& c : name) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    return name.find("dark") != name.npos;
}

bool WantsDark(Settings* settings) {
    const ColorScheme portal = AnsweredColorScheme();
    if (portal != ColorScheme::kUnknown) return portal == ColorScheme::kDark;
    const std::string& prefers = (*settings)["dark"];
    return prefers == "1" || prefers == "true" || IsDarkName((*settings)["Net/ThemeName"]);
}

DesktopLook ReadLook() {
    DesktopLook look;
    Settings gtk = ReadGtk();
    const double dpi = DotsPerInch(&gtk);
    TakeFont(gtk["Gtk/FontName"], dpi, &look);
    if (Environment("XDG_CURRENT_DESKTOP").find("KDE") != std::string::npos) {
        const Settings kde = ParseIni(ReadSmallFile(ConfigFolder() + "/kdeglobals"));
        if (TakeKde(kde, &look)) return look;
    }
    const bool dark = WantsDark(&gtk);
    if (dark) {
        look.window = kDarkWindow, look.list = kDarkList;
        look.text = look.list_text = kDarkText;
    }
    FindTheme(gtk["Net/ThemeName"], dark, &look);
    return look;
}

Fl_Color ToFltk(uint32_t color) {
    return fl_rgb_color(static_cast<unsigned char>(color >> 16), static_cast<unsigned char>(color >> 8),
                        static_cast<unsigned char>(color));
}

void SetColor(Fl_Color which, uint32_t color) {
    Fl::set_color(which, static_cast<unsigned char>(color >> 16), static_cast<unsigned char>(color >> 8),
                  static_cast<unsigned char>(color));
}

// FLTK keeps the pointer, and compares the next name with what it points to. A family's first character is
// its style.
void SetFont(const std::string& family) {
    static std::deque<std::string> names;
    if (family.empty() || (!names.empty() && names.back() == "B" + family)) return;
    Fl::set_font(FL_HELVETICA, names.emplace_back(" " + family).c_str());
    Fl::set_font(FL_HELVETICA_BOLD, names.emplace_back("B" + family).c_str());
}

void Give(const DesktopLook& look) {
    g_look = look;
    UseFlatScheme();
    const Fl_Color window = ToFltk(look.window);
    unsigned char r, g, b;
    Fl::get_color(window, r, g, b);
    Fl::background(r, g, b);
    SetColor(FL_BACKGROUND2_COLOR, look.list);
    SetColor(FL_FOREGROUND_COLOR, look.text);
    SetColor(FL_SELECTION_COLOR, look.marked);
    SetColor(FL_INACTIVE_COLOR, MixColors(look.text, look.window, 0.5f));
    SetFont(look.font);
    Fl::scrollbar_size(LookTextSize());
}

// A late answer of the portal, as long as a dialog is open.
void OnPortal(void*) {
    if (InnermostModal() == Modal::kNone) return;
    if (!AwaitColorScheme(0)) return Fl::repeat_timeout(kPortalEvery, OnPortal);
    Give(ReadLook());
    for (Fl_Window* window = Fl::first_window(); window; window = Fl::next_window(window))
        if (window != MainWindow()) window->redraw();
}

}  // namespace

bool IsDark(uint32_t color) {
    return 299 * (color >> 16 & 255) + 587 * (color >> 8 & 255) + 114 * (color & 255) < 127'500;
}

uint32_t MixColors(uint32_t first, uint32_t second, float part) {
    uint32_t color = 0;
    for (const int shift : {16, 8, 0}) {
        const auto a = static_cast<float>(first >> shift & 255),
                   b = static_cast<float>(second >> shift & 255);
        color |= static_cast<uint32_t>(a + (b - a) * part) << shift;
    }
    return color;
}

int LookTextSize() {
    const int size = g_look.text_size ? g_look.text_size : kDefaultText * Scale();
    return size < 8 ? 8 : size > 96 ? 96 : size;
}

void ApplyLook() {
    static bool asked = false;
    AskColorScheme();
    const bool answered = AwaitColorScheme(asked ? 0 : kPortalPatience);
    asked = true;
    Give(ReadLook());
    Fl::remove_timeout(OnPortal);
    if (!answered) Fl::add_timeout(kPortalEvery, OnPortal);
}

}  // namespace host::desktop
