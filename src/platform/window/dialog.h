// Modal dialogs: each runs a loop that keeps delivering posted messages until it is answered or a quit is
// posted.
#pragma once

#include <string>

#include "platform/wintypes.h"

struct OPENFILENAME {
    DWORD lStructSize;  // 76, the published size
    HWND hwndOwner;
    HINSTANCE hInstance;
    const char* lpstrFilter;  // pairs of texts, ended by an empty one
    char* lpstrCustomFilter;
    DWORD nMaxCustFilter;
    DWORD nFilterIndex;
    char* lpstrFile;  // out: the chosen file, absolute, separated by `\`
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

// A box with an OK button. Texts are raw bytes as in SetWindowTextA. Returns IDOK, however it was closed.
int MessageBoxA(HWND hOwner, const char* pszText, const char* pszCaption, UINT nType);

// Non-zero when a file was chosen. Opens in the folder of the file chosen or opened last. 0 when cancelled,
// when a quit is posted, or for a wrong lStructSize.
BOOL GetOpenFileNameA(OPENFILENAME* pOpen);

// The next dialog opens in the folder of this chart (a path as FileOpen takes it).
void RememberOpenedFile(const char* pszPath);

// The path of the chart chosen or opened last; empty when there is none.
std::string OpenedFile();

// The next GetOpenFileNameA returns this path at once, as if the user had chosen it: a dropped file. Of a
// folder it returns the only chart; if there are several or none, the dialog opens in it.
void AnswerNextOpenDialog(const char* pszPath);
