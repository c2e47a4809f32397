// Modal boxes: each runs a loop that goes on delivering posted messages until it is answered or a quit is
// posted.
#pragma once

#include "platform/wintypes.h"

struct OPENFILENAME {
    DWORD lStructSize;  // 76, the published size
    HWND hwndOwner;
    HINSTANCE hInstance;
    const char* lpstrFilter;  // pairs of texts, closed by an empty one
    char* lpstrCustomFilter;
    DWORD nMaxCustFilter;
    DWORD nFilterIndex;
    char* lpstrFile;  // in: the name shown first; out: the choice, absolute, with `\` between its parts
    DWORD nMaxFile;
    char* lpstrFileTitle;
    DWORD nMaxFileTitle;
    const char* lpstrInitialDir;
    const char* lpstrTitle;
    DWORD Flags;
    WORD nFileOffset;
    WORD nFileExtension;
    const char* lpstrDefExt;
};

constexpr UINT MB_OK = 0;
constexpr UINT MB_ICONEXCLAMATION = 48;
constexpr UINT MB_ICONINFORMATION = 64;
constexpr int IDOK = 1;

// A box with an OK button; texts are raw bytes as in SetWindowTextA. IDOK, however it was closed.
int MessageBoxA(HWND hOwner, const char* pszText, const char* pszCaption, UINT nType);

// Non-zero when a file was chosen. It begins in the folder of the file chosen or opened last.
// 0 when cancelled, when a quit was posted, or for a wrong lStructSize.
BOOL GetOpenFileNameA(OPENFILENAME* pOpen);

// The folder in which the next dialog begins: that of the chart named (a path as FileOpen takes it).
void RememberOpenedFile(const char* pszPath);

// The next GetOpenFileNameA answers with this path at once, as if the user had chosen it: a dropped file.
void AnswerNextOpenDialog(const char* pszPath);
