// The windows of the other instances.
#pragma once

#include <cstdint>

#include "platform/wintypes.h"

class CWinList {
public:
    CWinList();
    ~CWinList();
    CWinList(const CWinList&) = delete;
    CWinList& operator=(const CWinList&) = delete;

    int EnumAll();                                    // 0, or 1 when the windows cannot be listed
    int Add(HWND hWnd);                               // 1
    int Update(const char* pszClass, HWND hExclude);  // 0, or 1

    HWND* m_pAll;  // every window, in order of enumeration
    int32_t m_nAll;
    HWND* m_pSame;  // windows of the given class
    int32_t m_nSame;
};
