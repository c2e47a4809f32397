// Copies the lists of a compiled chart to flat records for playback.
#include <new>

#include "chart/bms.h"
#include "chart/charttime.h"

// Replaces the caller's list by nCount uninitialised records. Null when there is nothing to build.
static BmsEvent* NewList(BmsEvent** ppList, int32_t* pnCount, int32_t nCount) {
    if (!ppList || nCount == 0) return nullptr;
    CBMS::FreeList(ppList, pnCount);
    *ppList = new (std::nothrow) BmsEvent[static_cast<size_t>(nCount)];
    if (*ppList) *pnCount = nCount;
    return *ppList;
}

static void BuildList(BmsEvent** ppList, int32_t* pnCount, BmsObject* const* ppSource, int32_t nSource,
                      bool bTempo) {
    BmsEvent* pList = NewList(ppList, pnCount, nSource);
    if (!pList) return;
    for (int32_t i = 0; i < nSource; ++i) {
        const BmsObject& o = *ppSource[i];
        BmsEvent& e = pList[i];
        e.nMeasure = o.nMeasure;
        e.dPos = o.dPos;
        e.nChannel = o.nChannel;
        e.nTime = RoundTime(o.dTime);
        e.bDone = 0;
        e.pObject = bTempo ? nullptr : o.pObject;
        e.dValue = bTempo ? o.dValue : 0.0;
    }
}

void CBMS::GetBgmList(BmsEvent** ppList, int32_t* pnCount) {
    BuildList(ppList, pnCount, m_ppBgm, m_nBgm, false);
}

void CBMS::GetBgaList(BmsEvent** ppList, int32_t* pnCount) {
    BuildList(ppList, pnCount, m_ppBga, m_nBga, false);
}

void CBMS::GetNoteList(BmsEvent** ppList, int32_t* pnCount) {
    BuildList(ppList, pnCount, m_ppNote, m_nNote, false);
}

void CBMS::GetTempoList(BmsEvent** ppList, int32_t* pnCount) {
    BuildList(ppList, pnCount, m_ppTempo, m_nTempo, true);
}

void CBMS::GetBarList(BmsEvent** ppList, int32_t* pnCount) {
    if (!m_pMeasure) return;
    BmsEvent* pList = NewList(ppList, pnCount, m_nMeasure);
    if (!pList) return;
    for (int32_t i = 0; i < m_nMeasure; ++i) {
        pList[i] = {i, 0.0, 0, RoundTime(m_pMeasure[i].dStart), 0, nullptr, m_pMeasure[i].dLength};
    }
}

void CBMS::FreeList(BmsEvent** ppList, int32_t* pnCount) {
    delete[] * ppList;
    *ppList = nullptr;
    *pnCount = 0;
}
