#include "platform/debug.h"

#include <cstring>

#include "host/host.h"

void OutputDebugStringA(const char* pszText) {
    if (pszText) host::DebugText(pszText, std::strlen(pszText));
}
