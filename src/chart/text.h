// Helpers of the reader for NUL-terminated byte strings in Shift-JIS or ASCII. Only functions that say so
// handle two-byte characters.
#pragma once

#include <cstdint>

#include "platform/ascii.h"

// 1 if the text begins with the head, ignoring the case of a to z. 1 for an empty head.
inline int HasHeadI(const char* pszText, const char* pszHead) {
    for (; *pszHead; ++pszText, ++pszHead) {
        if (AsciiUpper(*pszText) != AsciiUpper(*pszHead)) return 0;  // also stops at the text's NUL
    }
    return 1;
}

void CutLF(char* pszText);   // replaces every LF by NUL
void CutTab(char* pszText);  // replaces every TAB by NUL

inline int IsDigit(unsigned char c) {
    return c >= '0' && c <= '9';
}
int IsBase36(unsigned char c);  // 0-9, A-Z, a-z

// The value of the first three bytes, 0 to 999, or -1 unless all are decimal digits.
inline int32_t GetMeasureNo(const char* pszText) {
    int32_t nMeasure = 0;
    for (int i = 0; i < 3; ++i) {
        if (!IsDigit(static_cast<unsigned char>(pszText[i]))) return -1;
        nMeasure = nMeasure * 10 + (pszText[i] - '0');
    }
    return nMeasure;
}

void RemoveUnderscore(char* pszText);  // removes every `_`

int IsSJisLead(unsigned char c);  // 0x81-0x9F, 0xE0-0xFC

// Appends a name to a directory, in the directory's buffer of nDirSize bytes, with one backslash between
// them. A backslash that is the second half of a two-byte character does not count as one. Truncates to the
// buffer.
void AddFileName(char* pszDir, int nDirSize, const char* pszName);

// Copies the directory part of the path, with its closing backslash, or the whole path when it has none.
// Truncates the path to nDirSize bytes first.
void GetDirName(const char* pszPath, char* pszDir, int nDirSize);

int32_t ObjNoToInt(const char* pszText);   // sound and image numbers, 0 to 575
int32_t Base36ToInt(const char* pszText);  // picture definitions, 0 to 1295

// Read numbers like the C library, but independent of the locale: leading white space, a sign, then digits up
// to the first other byte. No digits give 0. Saturates at 32 bits.
int32_t ReadDecimal(const char* pszText);
double ReadFloat(const char* pszText);  // decimal digits, `.`, exponent; no `0x`, `inf`, `nan`
