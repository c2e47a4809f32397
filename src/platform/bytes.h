// Little-endian numbers in the bytes of a file.
#pragma once

#include "platform/wintypes.h"

constexpr WORD ReadLe16(const BYTE* p) {
    return static_cast<WORD>(p[0] | p[1] << 8);
}

constexpr DWORD ReadLe32(const BYTE* p) {
    return static_cast<DWORD>(p[0]) | static_cast<DWORD>(p[1]) << 8 | static_cast<DWORD>(p[2]) << 16 |
           static_cast<DWORD>(p[3]) << 24;
}
