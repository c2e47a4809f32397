#include "chart/reader.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "chart/text.h"
#include "display/ddraw.h"
#include "platform/files/files.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"
#include "system/diagnostics.h"

char* ReadChartText(const char* pszPath, int64_t* pnSize) {
    FileForgetListings();
    FileStream* pFile = FileOpenAsNamed(pszPath);
    if (!pFile) return nullptr;
    char* pText = nullptr;
    const int64_t nSize = FileSeek(pFile, 0, SEEK_END) == 0 ? FileTell(pFile) : -1;
    if (nSize >= 0 && nSize <= BMS_FILE_LIMIT && FileSeek(pFile, 0, SEEK_SET) == 0) {
        pText = new (std::nothrow) char[static_cast<size_t>(nSize) + 1];
    }
    if (pText) {
        // If the file shrinks while being read, its length is what was read.
        *pnSize = static_cast<int64_t>(FileRead(pText, 1, static_cast<size_t>(nSize), pFile));
        pText[*pnSize] = '\0';
    }
    FileClose(pFile);
    return pText;
}

bool ReadPlace(const char* szLine, int32_t* pnMeasure, int32_t* pnChannel) {
    *pnMeasure = GetMeasureNo(szLine + 1);
    if (*pnMeasure < 0 || szLine[6] != ':') return false;
    *pnChannel = -1;
    if (IsDigit(static_cast<unsigned char>(szLine[4])) && IsDigit(static_cast<unsigned char>(szLine[5])))
        *pnChannel = (szLine[4] - '0') * 16 + (szLine[5] - '0');
    return true;
}

bool IsCommand(const char* szLine, int nLength) {
    return nLength > 4 && szLine[0] == '#';
}

// Calls fnChannel(measure, channel, data) or fnOther(line, length). Copies a line to remove its underscores.
template <class OnChannel, class OnOther>
static void ReadCommand(const char* szLine, int nLength, OnChannel& fnChannel, OnOther& fnOther) {
    int32_t nMeasure, nChannel;
    if (!ReadPlace(szLine, &nMeasure, &nChannel)) {
        fnOther(szLine, nLength);
    } else if (nChannel < 0) {
        return;
    } else if (nLength > 7 && std::memchr(szLine + 7, '_', static_cast<size_t>(nLength - 7))) {
        char szCopy[LINE_BUFFER];
        CopyLine(szLine, nLength, szCopy);
        RemoveUnderscore(szCopy + 7);
        fnChannel(nMeasure, nChannel, szCopy + 7);
    } else {
        fnChannel(nMeasure, nChannel, szLine + 7);
    }
}

// Walks over all possible commands of the text, which ends with a NUL. Reads a line where it stands: the byte
// after it is a NUL meanwhile. Copies lines shorter than the columns that are tested before the length.
template <class OnChannel, class OnOther>
static void ForCommands(char* pText, int64_t nSize, OnChannel fnChannel, OnOther fnOther) {
    LineScan scan;
    StartLines(&scan, pText, nSize);
    int nLength;
    while (const char* pFound = NextLine(&scan, &nLength)) {
        if (!IsCommand(pFound, nLength)) continue;
        if (nLength < 8) {
            char szShort[LINE_BUFFER];
            CopyLine(pFound, nLength, szShort);
            ReadCommand(szShort, nLength, fnChannel, fnOther);
            continue;
        }
        char* pEnd = pText + (pFound - pText) + nLength;
        const char cAfter = *pEnd;
        *pEnd = '\0';
        ReadCommand(pFound, nLength, fnChannel, fnOther);
        *pEnd = cAfter;
    }
}

static void FirstPass(CBMS* pBms, char* pText, int64_t nSize, char* szDir) {
    ForCommands(
        pText, nSize,
        [&](int32_t nMeasure, int32_t nChannel, const char* pszData) {
            if (pBms->CountChannel(nMeasure, nChannel, pszData) != 0 && nMeasure > pBms->m_nMeasure)
                pBms->m_nMeasure = nMeasure;
        },
        [&](const char* szLine, int nLength) { ReadDefinition(pBms, szLine, nLength, szDir); });
}

static void SecondPass(CBMS* pBms, char* pText, int64_t nSize, int32_t nMeasureBase) {
    ForCommands(
        pText, nSize,
        [&](int32_t nMeasure, int32_t nChannel, const char* pszData) {
            const int64_t nPlace = int64_t{nMeasure} + nMeasureBase;
            if (nPlace < 0 || nPlace >= pBms->m_nMeasure) return;
            pBms->ReadChannel(static_cast<int32_t>(nPlace), nChannel, pszData);
        },
        [&](const char* szLine, int nLength) { ReadHeader(pBms, szLine, nLength); });
}

static bool AllocList(BmsObject** ppList, BmsObject*** pppView, int32_t nCount) {
    if (nCount == 0) return true;
    *ppList = new (std::nothrow) BmsObject[static_cast<size_t>(nCount)];
    *pppView = new (std::nothrow) BmsObject*[static_cast<size_t>(nCount)];
    if (!*ppList || !*pppView) return false;
    for (int32_t i = 0; i < nCount; ++i) (*pppView)[i] = *ppList + i;
    return true;
}

int CBMS::AllocLists() {
    if (int64_t{m_nBgm} + m_nLength + m_nTempo + m_nBga + m_nNote > BMS_OBJECT_LIMIT) return 1;
    if (!AllocList(&m_pBgm, &m_ppBgm, m_nBgm)) return 1;
    if (m_nLength != 0) {
        m_pLength = new (std::nothrow) BmsLength[static_cast<size_t>(m_nLength)];
        if (!m_pLength) return 1;
    }
    return AllocList(&m_pTempo, &m_ppTempo, m_nTempo) && AllocList(&m_pBga, &m_ppBga, m_nBga) &&
                   AllocList(&m_pNote, &m_ppNote, m_nNote)
               ? 0
               : 1;
}

// Announces the files that will be opened, so that they can be read ahead.
static void Expect(int nKind, const char (*aszName)[BMS_PATH]) {
    const char* apszName[BMS_SLOTS];
    int nCount = 0;
    for (int i = 0; i < BMS_SLOTS; ++i) {
        if (aszName[i][0]) apszName[nCount++] = aszName[i];
    }
    FilesExpect(nKind, apszName, nCount);
}

void CBMS::LoadImages() {
    if (!m_pDDraw) return;
    Expect(FILES_PICTURES, m_aszBmp);
    for (int i = 0; i < BMS_SLOTS; ++i) {
        if (m_aszBmp[i][0]) m_pDDraw->LoadDib(m_aszBmp[i], i);
    }
    FilesExpectNoMore();
}

void CBMS::LoadSounds() {
    if (!m_pDSound) return;
    Expect(FILES_SOUNDS, m_aszWav);
    for (int i = 0; i < BMS_SLOTS; ++i) {
        if (!m_aszWav[i][0]) continue;
        CDSBuffer*& pSlot = m_pDSound->m_pSlot[i];
        delete pSlot;
        pSlot = new (std::nothrow) CDSBuffer(m_pDSound->m_pDS);
        if (!pSlot) continue;
        pSlot->SetFileName(m_aszWav[i]);
        pSlot->Load(0);  // whole, never as a stream
    }
    FilesExpectNoMore();
}

int32_t CBMS::Load(const char* pszPath, int32_t nMeasureBase) {
    int64_t nSize = 0;
    char* pText = ReadChartText(pszPath, &nSize);
    if (!pText) {
        DebugLog("CBMS::Load -> LoadError=%s\n", pszPath);
        return 0;
    }
    char szDir[BMS_PATH] = {};
    GetDirName(pszPath, szDir, BMS_PATH);
    for (int i = 0; i < BMS_SLOTS; ++i) m_aszWav[i][0] = m_aszBmp[i][0] = '\0';

    FirstPass(this, pText, nSize, szDir);
    if (AllocLists() != 0) {
        delete[] pText;
        Term();
        DebugLog("CBMS::Load -> LoadError=%s\n", pszPath);
        return 0;
    }
    m_nMeasure += 2;
    LoadImages();
    LoadSounds();
    SecondPass(this, pText, nSize, nMeasureBase);

    // Pairs such as `G0` were counted but create no object.
    m_nBgm = m_nBgmFill;
    m_nLength = m_nLengthFill;
    m_nTempo = m_nTempoFill;
    m_nBga = m_nBgaFill;
    m_nNote = m_nNoteFill;
    delete[] pText;
    return m_nMeasure;
}
