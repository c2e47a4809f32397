// Sorts a chart's objects. A chart file is nearly sorted: each line is sorted, and the lines of a measure
// stand together. So the sort merges existing ascending runs, and only where they overlap.
#include <algorithm>
#include <cstring>
#include <new>

#include "chart/bms.h"

static double PositionOf(const BmsObject* p) {
    return p->nMeasure + p->dPos;
}

int CompareObjects(const BmsObject* pA, const BmsObject* pB) {
    const double a = PositionOf(pA), b = PositionOf(pB);
    if (a < b) return -1;
    if (a > b) return 1;
    if (pA->nChannel == pB->nChannel) return 0;
    return pA->nChannel < pB->nChannel ? -1 : 1;
}

struct SortKey {
    double dPosition;
    int32_t nChannel;
    BmsObject* pObject;
};

static bool IsLess(const SortKey& a, const SortKey& b) {
    return (a.dPosition < b.dPosition) | ((a.dPosition == b.dPosition) & (a.nChannel < b.nChannel));
}

// Merges [nFirst, nMiddle) and [nMiddle, nEnd), both ascending. pSpare has room for the first run.
static void MergeRuns(SortKey* pKeys, int32_t nFirst, int32_t nMiddle, int32_t nEnd, SortKey* pSpare) {
    SortKey* pMiddle = pKeys + nMiddle;
    if (!IsLess(*pMiddle, pMiddle[-1])) return;
    // Skip elements that precede the whole second run or follow the whole first run.
    SortKey* pTo = std::upper_bound(pKeys + nFirst, pMiddle, *pMiddle, IsLess);
    const SortKey* pEndB = std::lower_bound(pMiddle, pKeys + nEnd, pMiddle[-1], IsLess);
    const SortKey* pA = pSpare;
    const SortKey* pEndA = pSpare + (pMiddle - pTo);
    std::memcpy(pSpare, pTo, static_cast<size_t>(pMiddle - pTo) * sizeof(SortKey));
    const SortKey* pB = pMiddle;
    while (pA < pEndA && pB < pEndB) {
        const bool bSecond = IsLess(*pB, *pA);
        *pTo++ = bSecond ? *pB : *pA;
        pB += bSecond;
        pA += !bSecond;
    }
    std::memcpy(pTo, pA, static_cast<size_t>(pEndA - pA) * sizeof(SortKey));
}

// Merges runs of similar weight first: on the stack, each run has a lower level than the one below it.
static void SortKeys(SortKey* pKeys, int32_t nCount, SortKey* pSpare) {
    struct Run {
        int32_t nFirst, nLevel;
    } aRun[33];
    int nRuns = 0;
    for (int32_t nEnd = 0; nEnd < nCount;) {
        aRun[nRuns++] = {nEnd, 0};
        do ++nEnd;
        while (nEnd < nCount && !IsLess(pKeys[nEnd], pKeys[nEnd - 1]));
        while (nRuns > 1 && (aRun[nRuns - 2].nLevel == aRun[nRuns - 1].nLevel || nEnd == nCount)) {
            MergeRuns(pKeys, aRun[nRuns - 2].nFirst, aRun[nRuns - 1].nFirst, nEnd, pSpare);
            ++aRun[--nRuns - 1].nLevel;
        }
    }
}

// Both buffers hold nCount keys.
static void SortSpan(BmsObject** ppList, int32_t nCount, SortKey* pKeys, SortKey* pSpare) {
    for (int32_t i = 0; i < nCount; ++i) pKeys[i] = {PositionOf(ppList[i]), ppList[i]->nChannel, ppList[i]};
    SortKeys(pKeys, nCount, pSpare);
    for (int32_t i = 0; i < nCount; ++i) ppList[i] = pKeys[i].pObject;
}

// Sorts measure by measure, which touches only as much of the buffers as the largest measure needs. False
// when the measures themselves are out of order.
static bool SortMeasures(BmsObject** ppList, int32_t nCount, SortKey* pKeys, SortKey* pSpare) {
    for (int32_t nFirst = 0, nEnd; nFirst < nCount; nFirst = nEnd) {
        nEnd = nFirst + 1;
        while (nEnd < nCount && ppList[nEnd]->nMeasure == ppList[nFirst]->nMeasure) ++nEnd;
        SortSpan(ppList + nFirst, nEnd - nFirst, pKeys, pSpare);
        if (nFirst > 0 && CompareObjects(ppList[nFirst - 1], ppList[nFirst]) > 0) return false;
    }
    return true;
}

void SortObjects(BmsObject** ppList, int32_t nCount) {
    SortKey* pKeys = new (std::nothrow) SortKey[static_cast<size_t>(nCount)];
    SortKey* pSpare = new (std::nothrow) SortKey[static_cast<size_t>(nCount)];
    if (!pKeys || !pSpare) {  // slower, but needs no memory
        std::stable_sort(ppList, ppList + nCount,
                         [](const BmsObject* pA, const BmsObject* pB) { return CompareObjects(pA, pB) < 0; });
    } else if (!SortMeasures(ppList, nCount, pKeys, pSpare)) {
        SortSpan(ppList, nCount, pKeys, pSpare);
    }
    delete[] pKeys;
    delete[] pSpare;
}
