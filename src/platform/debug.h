// Text for an attached debugger.
#pragma once

// Hands the bytes of a NUL-terminated text to the debugger, unchanged, if one listens; never fails.
void OutputDebugStringA(const char* pszText);
