#include <bit>
#include <cstring>

#include "chart/reader.h"

void StartLines(LineScan* pScan, const char* pText, int64_t nSize) {
    pScan->pNext = pText;
    pScan->pEnd = pText + nSize;
    pScan->pLineEnd = pText;
}

// The next byte below 14, which NUL, TAB, LF and CR are; pEnd when there is none. Looks at eight bytes at
// once: a byte found borrows from those above it, so only the lowest is sure.
static const char* FindControl(const char* p, const char* pEnd) {
    constexpr uint64_t ONES = 0x0101010101010101, HIGH = 0x8080808080808080;
    for (; pEnd - p >= 8; p += 8) {
        uint64_t nBytes;
        std::memcpy(&nBytes, p, sizeof nBytes);
        const uint64_t nFound = (nBytes - ONES * 14) & ~nBytes & HIGH;
        if (nFound == 0) continue;
        if constexpr (std::endian::native == std::endian::little) return p + std::countr_zero(nFound) / 8;
        break;
    }
    while (p < pEnd && static_cast<unsigned char>(*p) >= 14) ++p;
    return p;
}

// The end of the line: CR LF or NUL. *ppCut: its first LF or TAB, or the end. The NUL after the text makes
// reading one byte past a CR safe.
static const char* FindLineEnd(const char* p, const char* pEnd, const char** ppCut) {
    *ppCut = nullptr;
    for (;; ++p) {
        p = FindControl(p, pEnd);
        if (p == pEnd || *p == '\0' || (*p == '\r' && p[1] == '\n')) break;
        if (!*ppCut && (*p == '\n' || *p == '\t')) *ppCut = p;
    }
    if (!*ppCut) *ppCut = p;
    return p;
}

const char* NextLine(LineScan* pScan, int* pnLength) {
    const char* pLine = pScan->pNext;
    if (pLine >= pScan->pEnd) return nullptr;
    const char* pCut;
    const char* p = FindLineEnd(pLine, pScan->pEnd, &pCut);
    pScan->pLineEnd = p;
    while (p < pScan->pEnd && (*p == '\r' || *p == '\n' || *p == '\0')) ++p;
    pScan->pNext = p;
    *pnLength = static_cast<int>(pCut - pLine < LINE_BUFFER - 1 ? pCut - pLine : LINE_BUFFER - 1);
    return pLine;
}

void CopyLine(const char* pLine, int nLength, char* szLine) {
    std::memcpy(szLine, pLine, static_cast<size_t>(nLength));
    // Callers test fixed columns before they check the length.
    if (nLength < 8) {
        std::memset(szLine + nLength, 0, 8);
    } else {
        szLine[nLength] = '\0';
    }
}
