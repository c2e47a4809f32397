#include <cstring>
#include <new>

#include "chart/reader.h"
#include "chart/text.h"

// #WAVxx name and #BMPxx name: stores the path in a table of BMS_SLOTS entries.
static void ReadPath(char (*aszTable)[BMS_PATH], int32_t nFirst, const char* szLine, int nLength,
                     const char* szDir) {
    if (nLength < 8 || szLine[6] != ' ') return;
    const int32_t n = ObjNoToInt(szLine + 4);
    if (n < nFirst) return;
    std::memcpy(aszTable[n], szDir, std::strlen(szDir) + 1);
    AddFileName(aszTable[n], BMS_PATH, szLine + 7);
}

// #BGAxx yy x1 y1 x2 y2 dx dy: fixed columns up to yy, then values separated by blanks. After each value,
// reading continues after the next blank, counted from where the value began. Two blanks in a row therefore
// repeat a value.
static void ReadBgaDef(CBMS* pBms, const char* szLine) {
    int32_t an[6] = {};
    const char* p = szLine + 10;
    for (int32_t& n : an) {
        n = ReadDecimal(p);
        p = std::strchr(p, ' ');
        if (!p) break;
        ++p;
    }
    auto& [nX1, nY1, nX2, nY2, nDX, nDY] = an;
    if (nX1 < 0) nX1 = 0;
    if (nY1 < 0) nY1 = 0;
    if (int64_t{nX2} - nX1 > 256) nX2 = nX1 + 256;
    if (int64_t{nY2} - nY1 > 256) nY2 = nY1 + 256;
    if (szLine[6] != ' ') return;
    pBms->m_aBgaDef[Base36ToInt(szLine + 4)] = {nX1, nY1, nX2, nY2, nDX, nDY, ObjNoToInt(szLine + 7)};
}

void ReadDefinition(CBMS* pBms, const char* szLine, int nLength, char* szDir) {
    const char* pszWord = szLine + 1;
    if (HasHeadI(pszWord, "WAV")) {
        ReadPath(pBms->m_aszWav, 1, szLine, nLength, szDir);
    } else if (HasHeadI(pszWord, "BMP")) {
        ReadPath(pBms->m_aszBmp, 0, szLine, nLength, szDir);
    } else if (HasHeadI(pszWord, "BGA")) {
        if (nLength >= 22) ReadBgaDef(pBms, szLine);
    } else if (HasHeadI(pszWord, "PATH_WAV")) {
        if (nLength < 12) return;
        std::strncpy(szDir, szLine + 10, BMS_PATH - 1);
        szDir[BMS_PATH - 1] = '\0';
    }
}

// #BPMxx number if columns 4 and 5 are base-36 digits, else #BPM number. `#BPM120` is the latter and reads as
// 20.
static void ReadTempo(CBMS* pBms, const char* szLine, int nLength) {
    if (nLength >= 8 && IsBase36(static_cast<unsigned char>(szLine[4])) &&
        IsBase36(static_cast<unsigned char>(szLine[5]))) {
        const int32_t n = ObjNoToInt(szLine + 4);
        if (n > 0) pBms->m_adBPM[n] = ReadFloat(szLine + 7);
    } else if (nLength >= 6) {
        pBms->m_dBPM = ReadFloat(szLine + 5);
    }
}

static void SetText(char** ppsz, const char* pszText) {
    const size_t nSize = std::strlen(pszText) + 1;
    char* psz = new (std::nothrow) char[nSize];
    if (!psz) return;
    std::memcpy(psz, pszText, nSize);
    delete[] * ppsz;
    *ppsz = psz;
}

static int32_t ReadDigitByte(const char* p) {
    return static_cast<signed char>(*p) - '0';
}

void ReadHeader(CBMS* pBms, const char* szLine, int nLength) {
    const char* pszWord = szLine + 1;
    // The value follows the keyword's blank directly and has at least one character.
    if (HasHeadI(pszWord, "TITLE ")) {
        if (nLength >= 8) SetText(&pBms->m_pszTitle, szLine + 7);
    } else if (HasHeadI(pszWord, "ARTIST ")) {
        if (nLength >= 9) SetText(&pBms->m_pszArtist, szLine + 8);
    } else if (HasHeadI(pszWord, "GENRE ")) {
        if (nLength >= 8) SetText(&pBms->m_pszGenre, szLine + 7);
    } else if (HasHeadI(pszWord, "BPM")) {
        ReadTempo(pBms, szLine, nLength);
    } else if (HasHeadI(pszWord, "PLAYER ")) {
        if (nLength >= 9) pBms->m_nPlayer = ReadDigitByte(szLine + 8);
    } else if (HasHeadI(pszWord, "PLAYLEVEL ")) {
        if (nLength >= 12) pBms->m_nPlayLevel = ReadDecimal(szLine + 11);
    } else if (HasHeadI(pszWord, "RANK ")) {
        if (nLength >= 7) pBms->m_nRank = ReadDigitByte(szLine + 6);
    } else if (HasHeadI(pszWord, "VOLWAV ")) {
        if (nLength >= 9) pBms->m_nVolWav = ReadDecimal(szLine + 8);
    } else if (HasHeadI(pszWord, "TOTAL ")) {
        if (nLength >= 8) pBms->m_nTotal = ReadDecimal(szLine + 7);
    }
}
