// Output for a debugger.
#pragma once

// Passes the bytes of a NUL-terminated text unchanged to the debugger, if one is attached. Never fails.
void OutputDebugStringA(const char* pszText);
