#include "shell/winlist.h"

#include <cstring>

#include "platform/window/window.h"
#include "system/diagnostics.h"

namespace {

void FreeHandles(HWND** ppHandles, int32_t* pnCount) {
    delete[] * ppHandles;
    *ppHandles = nullptr;
    *pnCount = 0;
}

void AppendHandle(HWND** ppHandles, int32_t* pnCount, HWND hWnd) {
    HWND* pNew = new HWND[*pnCount + 1];
    if (*pnCount) std::memcpy(pNew, *ppHandles, sizeof(HWND) * *pnCount);
    pNew[*pnCount] = hWnd;
    delete[] * ppHandles;
    *ppHandles = pNew;
    ++*pnCount;
}

BOOL AddToList(HWND hWnd, LPARAM lParam) {
    return reinterpret_cast<CWinList*>(lParam)->Add(hWnd);
}

}  // namespace

CWinList::CWinList() : m_pAll(nullptr), m_nAll(0), m_pSame(nullptr), m_nSame(0) {}

CWinList::~CWinList() {
    FreeHandles(&m_pAll, &m_nAll);
    FreeHandles(&m_pSame, &m_nSame);
}

int CWinList::EnumAll() {
    FreeHandles(&m_pAll, &m_nAll);
    FreeHandles(&m_pSame, &m_nSame);
    return EnumWindows(AddToList, reinterpret_cast<LPARAM>(this)) ? 0 : 1;
}

int CWinList::Add(HWND hWnd) {
    AppendHandle(&m_pAll, &m_nAll, hWnd);
    return 1;
}

int CWinList::Update(const char* pszClass, HWND hExclude) {
    if (EnumAll()) return 1;
    FreeHandles(&m_pSame, &m_nSame);
    for (int32_t i = 0; i < m_nAll; ++i) {
        char szName[256];
        if (!GetClassNameA(m_pAll[i], szName, sizeof(szName))) {
            DebugLog("GetClassNameError\n");
            return 1;
        }
        if (std::strcmp(szName, pszClass) == 0 && m_pAll[i] != hExclude) {
            DebugLog("SameClassName!\n");
            AppendHandle(&m_pSame, &m_nSame, m_pAll[i]);
        }
    }
    return 0;
}
