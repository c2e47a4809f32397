#include <FL/Enumerations.H>

#include <cstring>

#include "host/desktop/desktop.h"

namespace host::desktop {
namespace {

struct KeyPair {
    int fltk, code;
};

constexpr KeyPair kKeys[] = {
    {FL_Enter, 13},     {FL_KP_Enter, 13},  {FL_Escape, 27},    {FL_BackSpace, 8},     {FL_Tab, 9},
    {FL_Page_Up, 33},   {FL_Page_Down, 34}, {FL_End, 35},       {FL_Home, 36},         {FL_Left, 37},
    {FL_Up, 38},        {FL_Right, 39},     {FL_Down, 40},      {FL_Print, 44},        {FL_Insert, 45},
    {FL_Delete, 46},    {FL_Pause, 19},     {FL_Caps_Lock, 20}, {FL_Shift_L, 16},      {FL_Shift_R, 16},
    {FL_Control_L, 17}, {FL_Control_R, 17}, {FL_Alt_L, 18},     {FL_Alt_R, 18},        {FL_Meta_L, 91},
    {FL_Meta_R, 92},    {FL_Menu, 93},      {FL_Num_Lock, 144}, {FL_Scroll_Lock, 145}, {FL_KP + '*', 106},
    {FL_KP + '+', 107}, {FL_KP + '-', 109}, {FL_KP + '.', 110}, {FL_KP + '/', 111},
};

}  // namespace

int VirtualKey(int fltk_key, const char* text) {
    for (const KeyPair& pair : kKeys) {
        if (pair.fltk == fltk_key) return pair.code;
    }
    if (fltk_key > FL_F && fltk_key <= FL_F + 24) return 111 + fltk_key - FL_F;
    if (fltk_key >= FL_KP + '0' && fltk_key <= FL_KP + '9') return 96 + fltk_key - FL_KP - '0';
    if (fltk_key == ' ' || (fltk_key >= '0' && fltk_key <= '9')) return fltk_key;
    if (fltk_key >= 'a' && fltk_key <= 'z') return fltk_key - 'a' + 'A';
    // An input method delivers composed text without a key, a full-width blank included.
    if (fltk_key == 0 && text && (std::strcmp(text, " ") == 0 || std::strcmp(text, "\u3000") == 0)) return 32;
    return 0;
}

}  // namespace host::desktop
