#include <array>
#include <cstring>

#include "chart/channels.h"
#include "chart/digits.h"
#include "chart/text.h"
#include "display/ddraw.h"
#include "sound/dsound.h"

static constexpr ChannelKind FindChannelKind(int32_t nChannel) {
    switch (nChannel) {
        case 1:
            return KIND_BGM;
        case 2:
            return KIND_LENGTH;
        case 3:
        case 8:
            return KIND_TEMPO;
        case 4:
        case 6:
        case 7:
            return KIND_BGA;
        default:
            break;
    }
    const int32_t nSide = nChannel >> 4, nLane = nChannel & 15;
    return nSide >= 1 && nSide <= 4 && nLane >= 1 && nLane <= 9 ? KIND_NOTE : KIND_NONE;
}

// A table, because the kinds of successive lines are unpredictable.
static constexpr auto CHANNEL_KIND = [] {
    std::array<uint8_t, 0x50> aTable{};  // no list has a channel above these
    for (size_t i = 0; i < aTable.size(); ++i)
        aTable[i] = static_cast<uint8_t>(FindChannelKind(static_cast<int32_t>(i)));
    return aTable;
}();

ChannelKind GetChannelKind(int32_t nChannel) {
    const auto nIndex = static_cast<uint32_t>(nChannel);
    return nIndex < CHANNEL_KIND.size() ? static_cast<ChannelKind>(CHANNEL_KIND[nIndex]) : KIND_NONE;
}

static bool IsRest(const char* p) {
    return (p[0] == '0') & (p[1] == '0');
}

// Calls fnPair(index, pair) for every pair other than `00` (a rest), which makes no object on any channel.
// Their positions are unpredictable, so they are first collected without a branch, a block at a time.
template <class Function>
static void ForPairs(const char* pData, int32_t nPairs, Function fnPair) {
    constexpr int32_t BLOCK = 512;  // more than a line can hold
    int32_t aIndex[BLOCK];
    for (int32_t nFirst = 0; nFirst < nPairs; nFirst += BLOCK) {
        const int32_t nEnd = nPairs - nFirst > BLOCK ? nFirst + BLOCK : nPairs;
        int32_t nFound = 0;
        for (int32_t i = nFirst; i < nEnd; ++i) {
            aIndex[nFound] = i;
            nFound += !IsRest(pData + 2 * i);
        }
        for (int32_t k = 0; k < nFound; ++k) fnPair(aIndex[k], pData + 2 * aIndex[k]);
    }
}

static int32_t CountPairs(const char* pszData) {
    return static_cast<int32_t>(std::strlen(pszData) / 2);
}

int32_t CBMS::CountChannel(int32_t nMeasure, int32_t nChannel, const char* pszData) {
    if (nChannel == 2) {
        ++m_nLength;
        return 1;
    }
    int32_t nCount = 0;
    const int32_t nPairs = CountPairs(pszData);
    for (int32_t i = 0; i < nPairs; ++i) nCount += PairToBase36(pszData + 2 * i) > 0;
    int32_t nNoList = 0;
    int32_t* const apnCount[] = {&nNoList, &m_nBgm, &m_nLength, &m_nTempo, &m_nBga, &m_nNote};  // by kind
    *apnCount[GetChannelKind(nChannel)] += nCount;
    return nCount;
}

// One list during the second pass. Appends records, never more than were counted.
struct ListTail {
    BmsObject* pList;
    int32_t nCount;
    int32_t* pnFill;

    BmsObject* Store(int32_t nMeasure, double dPos, int32_t nChannel) {
        if (*pnFill >= nCount) return nullptr;
        BmsObject* p = &pList[(*pnFill)++];
        p->nMeasure = nMeasure;
        p->dPos = dPos;
        p->nChannel = nChannel;
        p->dTime = 0.0;
        p->pObject = nullptr;
        return p;
    }
};

static double PairPos(int32_t i, int32_t nPairs) {
    return static_cast<double>(i) / static_cast<double>(nPairs);
}

static void ReadSounds(CBMS* pBms, ListTail tail, int32_t nMeasure, int32_t nChannel, const char* pszData) {
    const int32_t nPairs = CountPairs(pszData);
    ForPairs(pszData, nPairs, [&](int32_t i, const char* p) {
        const int32_t n = PairToObjNo(p);
        if (n == 0) return;
        BmsObject* pObject = tail.Store(nMeasure, PairPos(i, nPairs), nChannel);
        if (pObject && pBms->m_pDSound) pObject->pObject = pBms->m_pDSound->m_pSlot[n];
    });
}

static void ReadTempos(CBMS* pBms, ListTail tail, int32_t nMeasure, int32_t nChannel, const char* pszData) {
    const int32_t nPairs = CountPairs(pszData);
    ForPairs(pszData, nPairs, [&](int32_t i, const char* p) {
        const int32_t nHex = PairToHex(p), nNumber = PairToObjNo(p);
        if (nHex == 0 && nNumber == 0) return;
        BmsObject* pObject = tail.Store(nMeasure, PairPos(i, nPairs), nChannel);
        if (pObject) pObject->dValue = nChannel == 8 ? pBms->m_adBPM[nNumber] : static_cast<double>(nHex);
    });
}

static void ReadPictures(CBMS* pBms, ListTail tail, int32_t nMeasure, int32_t nChannel, const char* pszData) {
    const int32_t nPairs = CountPairs(pszData);
    ForPairs(pszData, nPairs, [&](int32_t i, const char* p) {
        const int32_t n = PairToBase36(p);
        if (n == 0) return;
        CDib* pDib = nullptr;
        if (n < DDRAW_SLOTS && pBms->m_aBgaDef[n].nBmp == 0 && pBms->m_pDDraw)
            pDib = pBms->m_pDDraw->m_apDib[n];
        BmsObject* pObject =
            tail.Store(nMeasure, PairPos(i, nPairs), pDib ? nChannel : nChannel + BGADEF_CHANNEL_BASE);
        if (!pObject) return;
        if (pDib) {
            pObject->pObject = pDib;
        } else {
            pObject->pObject = &pBms->m_aBgaDef[n];
        }
    });
}

void CBMS::ReadChannel(int32_t nMeasure, int32_t nChannel, const char* pszData) {
    const ChannelKind nKind = GetChannelKind(nChannel);
    const ListTail aSounds[] = {{m_pBgm, m_nBgm, &m_nBgmFill}, {m_pNote, m_nNote, &m_nNoteFill}};
    switch (nKind) {
        case KIND_BGM:
        case KIND_NOTE:
            ReadSounds(this, aSounds[nKind == KIND_NOTE], nMeasure, nChannel, pszData);
            break;
        case KIND_TEMPO:
            ReadTempos(this, {m_pTempo, m_nTempo, &m_nTempoFill}, nMeasure, nChannel, pszData);
            break;
        case KIND_BGA:
            ReadPictures(this, {m_pBga, m_nBga, &m_nBgaFill}, nMeasure, nChannel, pszData);
            break;
        case KIND_LENGTH:
            if (m_nLengthFill < m_nLength) m_pLength[m_nLengthFill++] = {nMeasure, ReadFloat(pszData)};
            break;
        default:
            break;
    }
}
