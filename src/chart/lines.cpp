#include <cstring>

#include "chart/reader.h"

void StartLines(LineScan* pScan, const char* pText, int64_t nSize) {
    pScan->pNext = pText;
    pScan->pEnd = pText + nSize;
    pScan->pBreak = pScan->pNul = nullptr;
}

static const char* FindByte(const char* pFrom, const char* pEnd, char c) {
    const void* p = std::memchr(pFrom, c, static_cast<size_t>(pEnd - pFrom));
    return p ? static_cast<const char*>(p) : pEnd;
}

// The NUL after the text makes reading one byte past a CR safe.
static const char* FindBreak(const char* pFrom, const char* pEnd) {
    const char* p = FindByte(pFrom, pEnd, '\r');
    while (p < pEnd && p[1] != '\n') p = FindByte(p + 1, pEnd, '\r');
    return p;
}

static const char* FindLineEnd(LineScan* pScan) {
    if (!pScan->pBreak || pScan->pBreak < pScan->pNext) pScan->pBreak = FindBreak(pScan->pNext, pScan->pEnd);
    if (!pScan->pNul || pScan->pNul < pScan->pNext) pScan->pNul = FindByte(pScan->pNext, pScan->pEnd, '\0');
    return pScan->pBreak < pScan->pNul ? pScan->pBreak : pScan->pNul;
}

int TakeLine(LineScan* pScan, char* szLine) {
    if (pScan->pNext >= pScan->pEnd) return -1;
    const char* pLine = pScan->pNext;
    const char* p = FindLineEnd(pScan);
    int64_t nLength = p - pLine;
    while (p < pScan->pEnd && (*p == '\r' || *p == '\n' || *p == '\0')) ++p;
    pScan->pNext = p;

    if (nLength > LINE_BUFFER - 1) nLength = LINE_BUFFER - 1;
    const char* pCut = FindByte(pLine, pLine + nLength, '\n');
    nLength = FindByte(pLine, pCut, '\t') - pLine;
    std::memcpy(szLine, pLine, static_cast<size_t>(nLength));
    // Callers test fixed columns before they check the length.
    std::memset(szLine + nLength, 0, nLength < 8 ? static_cast<size_t>(8 - nLength) : 1);
    return static_cast<int>(nLength);
}
