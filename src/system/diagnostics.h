// Text lines for an attached debugger, and the names of result codes.
#pragma once

#include "platform/wintypes.h"

#if defined(__GNUC__)
#define DIAGNOSTICS_FORMAT(n) __attribute__((format(printf, n, n + 1)))
#else
#define DIAGNOSTICS_FORMAT(n)
#endif

// Formats as vsprintf does, cut at 259 bytes, and hands the text on with nothing added. 1.
int DebugLog(const char* pszFormat, ...) DIAGNOSTICS_FORMAT(1);
int ErrorBox(HWND hOwner, const char* pszFormat, ...) DIAGNOSTICS_FORMAT(2);  // result of MessageBoxA
int LogDSoundResult(HRESULT hr);                                              // 1
void LogDInputResult(HRESULT hr);
