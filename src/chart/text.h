// The reader's small helpers on NUL-terminated byte strings. Bytes are Shift-JIS or ASCII; only the functions
// that say so look at two-byte characters.
#pragma once

#include <cstdint>

// 1 if the text begins with the head, a to z folded to upper case on both sides. An empty head gives 1.
int HasHeadI(const char* pszText, const char* pszHead);

void CutLF(char* pszText);   // every LF becomes NUL
void CutTab(char* pszText);  // every TAB becomes NUL

int IsDigit(unsigned char c);   // 0-9
int IsBase36(unsigned char c);  // 0-9, A-Z, a-z

// The value 0 to 999 of the first three bytes if all are decimal digits, else -1.
int32_t GetMeasureNo(const char* pszText);

void RemoveUnderscore(char* pszText);  // deletes every `_` and closes the gap

int IsSJisLead(unsigned char c);  // 0x81-0x9F, 0xE0-0xFC

// Joins directory and name with one backslash between them, in the directory's buffer of nDirSize bytes. A
// backslash that is the second half of a two-byte character does not count as one. What does not fit is cut.
void AddFileName(char* pszDir, int nDirSize, const char* pszName);

// The directory part of the path with its closing backslash, the whole path when it has none. The buffer has
// nDirSize bytes; a longer path is cut first.
void GetDirName(const char* pszPath, char* pszDir, int nDirSize);

int32_t ObjNoToInt(const char* pszText);   // sound and image numbers, 0 to 575
int32_t Base36ToInt(const char* pszText);  // picture definitions, 0 to 1295

// Numbers as the usual library conversions read them, without a locale: leading white space, a sign, digits
// up to the first other byte. No digits give 0. Results beyond 32 bits are held at the end of the range.
int32_t ReadDecimal(const char* pszText);
double ReadFloat(const char* pszText);  // decimal digits, `.`, exponent; no `0x`, `inf`, `nan`
// The hexadecimal number of a pair's two characters: 0 unless the first is a hexadecimal digit, no blank, no
// sign.
int32_t ReadHexPair(const char* pszText);
