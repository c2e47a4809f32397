#include "system/diagnostics.h"

#include <cstdarg>
#include <cstdio>

#include "platform/debug.h"
#include "platform/window/dialog.h"

namespace {

constexpr int kTextSize = 260;

struct ResultName {
    uint32_t nCode;
    const char* pszText;
};

constexpr ResultName kDSoundNames[] = {
    {0x00000000, "HRESULT->DS_OK\n"},
    {0x8878000A, "HRESULT->DSERR_ALLOCATED\n"},
    {0x8878001E, "HRESULT->DSERR_CONTROLUNAVAIL\n"},
    {0x88780032, "HRESULT->DSERR_INVALIDCALL\n"},
    {0x88780064, "HRESULT->DSERR_BADFORMAT\n"},
    {0x887800AA, "HRESULT->DSERR_UNINITIALIZED\n"},
    {0x887800B4, "HRESULT->DSERR_BUFFERTOOSMALL\n"},
    {0x887800BE, "HRESULT->DSERR_DS8_REQUIRED\n"},
    {0x80004001, "HRESULT->DSERR_UNSUPPORTED\n"},
    {0x8007000E, "HRESULT->DSERR_OUTOFMEMORY\n"},
    {0x80040110, "HRESULT->DSERR_NOAGGREGATION\n"},
    {0x80070057, "HRESULT->DSERR_INVALIDPARAM\n"},
};

constexpr ResultName kDInputNames[] = {
    {0x00000000, "HRESULT->DI_OK"},
    {0x00000001, "HRESULT->DI_PROPNOEFFECT"},
    {0x80004001, "HRESULT->DIERR_UNSUPPORTED"},
    {0x80070002, "HRESULT->DIERR_OBJECTNOTFOUND"},
    {0x80070015, "HRESULT->DIERR_NOTINITIALIZED"},
    {0x80070057, "HRESULT->DIERR_INVALIDPARAM"},
};

template <int N>
const char* FindName(const ResultName (&aNames)[N], HRESULT hr, const char* pszUnknown) {
    for (const ResultName& name : aNames) {
        if (name.nCode == static_cast<uint32_t>(hr)) return name.pszText;
    }
    return pszUnknown;
}

}  // namespace

int DebugLog(const char* pszFormat, ...) {
    char szText[kTextSize];
    va_list args;
    va_start(args, pszFormat);
    std::vsnprintf(szText, sizeof(szText), pszFormat, args);
    va_end(args);
    OutputDebugStringA(szText);
    return 1;
}

int ErrorBox(HWND hOwner, const char* pszFormat, ...) {
    char szText[kTextSize];
    va_list args;
    va_start(args, pszFormat);
    std::vsnprintf(szText, sizeof(szText), pszFormat, args);
    va_end(args);
    return MessageBoxA(hOwner, szText, "ERROR MESSAGE", MB_OK);
}

int LogDSoundResult(HRESULT hr) {
    return DebugLog("%s", FindName(kDSoundNames, hr, "HRESULT->UnknownError\n"));
}

void LogDInputResult(HRESULT hr) {
    DebugLog("%s", FindName(kDInputNames, hr, "HRESULT->UnknownError"));
    DebugLog("(%08X)\n", static_cast<uint32_t>(hr));
}
