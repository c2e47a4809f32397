// Log lines for a debugger, and names of result codes.
#pragma once

#include "platform/wintypes.h"

#if defined(__GNUC__)
#define DIAGNOSTICS_FORMAT(n) __attribute__((format(printf, n, n + 1)))
#else
#define DIAGNOSTICS_FORMAT(n)
#endif

// Formats like vsprintf, truncates to 259 bytes, and passes the text on unchanged. Returns 1.
int DebugLog(const char* pszFormat, ...) DIAGNOSTICS_FORMAT(1);
int ErrorBox(HWND hOwner, const char* pszFormat, ...) DIAGNOSTICS_FORMAT(2);  // result of MessageBoxA
int LogDSoundResult(HRESULT hr);                                              // 1
void LogDInputResult(HRESULT hr);
