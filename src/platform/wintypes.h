// The platform's basic types, with their published names and widths.
#pragma once

#include <cstddef>
#include <cstdint>

using BOOL = int32_t;
using BYTE = uint8_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using UINT = uint32_t;
using LONG = int32_t;
using HRESULT = int32_t;  // negative: failure
using WPARAM = uintptr_t;
using LPARAM = intptr_t;
using LRESULT = intptr_t;
using ATOM = uint16_t;
using MMRESULT = UINT;

static_assert(sizeof(HRESULT) == 4 && sizeof(LONG) == 4 && sizeof(DWORD) == 4 && sizeof(BOOL) == 4);
static_assert(static_cast<HRESULT>(0x80004005u) < 0, "a failure code is negative");

// Handles. Each kind points to a type that only its stand-in knows, so kinds cannot be confused.
struct WindowObject;
struct GdiObject;
struct DeviceContext;
struct MenuObject;
struct ModuleResources;
using HWND = WindowObject*;
using HGDIOBJ = GdiObject*;
using HBITMAP = GdiObject*;
using HBRUSH = GdiObject*;
using HICON = GdiObject*;
using HCURSOR = GdiObject*;
using HDC = DeviceContext*;
using HMENU = MenuObject*;
using HINSTANCE = const ModuleResources*;

struct POINT {
    LONG x, y;
};

struct RECT {  // right and bottom are exclusive
    LONG left, top, right, bottom;
};

constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001u);
constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000Eu);
constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057u);

constexpr MMRESULT MMSYSERR_NOERROR = 0;
