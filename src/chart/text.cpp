#include "chart/text.h"

#include <charconv>
#include <cstring>
#include <limits>

#include "chart/digits.h"
#include "platform/ascii.h"

static void CutAt(char* pszText, char c) {
    for (char* p = pszText; (p = std::strchr(p, c)) != nullptr; ++p) *p = '\0';
}

void CutLF(char* pszText) {
    CutAt(pszText, '\n');
}

void CutTab(char* pszText) {
    CutAt(pszText, '\t');
}

int IsBase36(unsigned char c) {
    return IsDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

void RemoveUnderscore(char* pszText) {
    char* pTo = std::strchr(pszText, '_');
    if (!pTo) return;
    for (const char* pFrom = pTo; *pFrom; ++pFrom) {
        if (*pFrom != '_') *pTo++ = *pFrom;
    }
    *pTo = '\0';
}

int IsSJisLead(unsigned char c) {
    return (c >= 0x81 && c <= 0x9F) || (c >= 0xE0 && c <= 0xFC);
}

void AddFileName(char* pszDir, int nDirSize, const char* pszName) {
    int n = static_cast<int>(std::strlen(pszDir));
    const bool bClosed =
        n >= 1 && pszDir[n - 1] == '\\' && !(n >= 2 && IsSJisLead(static_cast<unsigned char>(pszDir[n - 2])));
    if (!bClosed && n < nDirSize - 1) pszDir[n++] = '\\';
    const int nRoom = nDirSize - 1 - n;
    const int nName = static_cast<int>(strnlen(pszName, static_cast<size_t>(nRoom)));
    std::memcpy(pszDir + n, pszName, static_cast<size_t>(nName));
    pszDir[n + nName] = '\0';
}

void GetDirName(const char* pszPath, char* pszDir, int nDirSize) {
    int n = 0;
    while (n < nDirSize - 1 && pszPath[n]) {
        pszDir[n] = pszPath[n];
        ++n;
    }
    pszDir[n] = '\0';
    char* pLast = std::strrchr(pszDir, '\\');
    if (pLast) pLast[1] = '\0';
}

int32_t ObjNoToInt(const char* pszText) {
    return pszText[0] && pszText[1] ? PairToObjNo(pszText) : 0;
}

int32_t Base36ToInt(const char* pszText) {
    return pszText[0] && pszText[1] ? PairToBase36(pszText) : 0;
}

static const char* SkipSpace(const char* p) {
    while (*p == ' ' || (*p >= '\t' && *p <= '\r')) ++p;
    return p;
}

int32_t ReadDecimal(const char* pszText) {
    const char* p = SkipSpace(pszText);
    const bool bNegative = *p == '-';
    if (*p == '-' || *p == '+') ++p;
    constexpr int64_t MAX = std::numeric_limits<int32_t>::max();
    int64_t n = 0;
    for (; IsDigit(static_cast<unsigned char>(*p)); ++p) {
        n = n * 10 + (*p - '0');
        if (n > MAX + 1) n = MAX + 1;
    }
    if (bNegative) return static_cast<int32_t>(-n);
    return static_cast<int32_t>(n > MAX ? MAX : n);
}

// The result for a number out of a double's range: infinity, or 0.0 when it is too small. The text consists
// of digits, a point and an exponent.
static double OutOfRange(const char* p, const char* pEnd) {
    int64_t nPlace = 0;  // decimal exponent of the first digit that is not 0
    bool bPoint = false, bFound = false;
    for (; p < pEnd && (IsDigit(static_cast<unsigned char>(*p)) || *p == '.'); ++p) {
        if (*p == '.') {
            bPoint = true;
        } else if (!bFound) {
            bFound = *p != '0';
            if (bPoint) --nPlace;
        } else if (!bPoint) {
            ++nPlace;
        }
    }
    if (p < pEnd) nPlace += ReadDecimal(p + 1);
    return nPlace > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

double ReadFloat(const char* pszText) {
    const char* p = SkipSpace(pszText);
    const bool bNegative = *p == '-';
    if (*p == '-' || *p == '+') ++p;
    if (!IsDigit(static_cast<unsigned char>(*p)) && *p != '.') return 0.0;
    double d = 0.0;
    const auto [pEnd, nError] = std::from_chars(p, p + std::strlen(p), d, std::chars_format::general);
    if (nError == std::errc::result_out_of_range) d = OutOfRange(p, pEnd);
    return bNegative ? -d : d;
}
