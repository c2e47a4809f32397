// Sorts a chart's objects. A chart file is nearly sorted: each line is sorted, and the lines of a measure
// stand together. So the sort goes measure by measure. Where a measure has many objects, it merges existing
// ascending runs, and only where they overlap.
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

// Positions and channels are never negative, so their bits are in the order of their values. The place in the
// list makes every key different and the sort stable, and finds the object again.
struct SortKey {
    uint64_t qwPosition;
    uint64_t qwChannel;  // and the place, in the lower half
};

static bool IsLess(const SortKey& a, const SortKey& b) {
    return (a.qwPosition < b.qwPosition) | ((a.qwPosition == b.qwPosition) & (a.qwChannel < b.qwChannel));
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

// Room for the sort of one list, nCount entries each.
struct SortSpace {
    SortKey* pKeys;
    SortKey* pSpare;
    BmsObject** ppFrom;
};

static SortKey KeyOf(const BmsObject* p, int32_t nPlace) {
    SortKey key;
    const double dPosition = PositionOf(p);
    std::memcpy(&key.qwPosition, &dPosition, sizeof key.qwPosition);
    key.qwChannel =
        static_cast<uint64_t>(static_cast<uint32_t>(p->nChannel)) << 32 | static_cast<uint32_t>(nPlace);
    return key;
}

static void MergeSpan(BmsObject** ppList, int32_t nCount, const SortSpace& space) {
    for (int32_t i = 0; i < nCount; ++i) space.pKeys[i] = KeyOf(ppList[i], i);
    SortKeys(space.pKeys, nCount, space.pSpare);
    std::memcpy(space.ppFrom, ppList, static_cast<size_t>(nCount) * sizeof *ppList);
    for (int32_t i = 0; i < nCount; ++i)
        ppList[i] = space.ppFrom[static_cast<uint32_t>(space.pKeys[i].qwChannel)];
}

// A measure of few objects: counts for each how many precede it. Unlike a merge it never branches on the
// order of two objects, which is as good as random here, and a wrong guess costs as much as a dozen
// comparisons.
constexpr int32_t RANK_LIMIT = 32;

static void RankSpan(BmsObject** ppList, int32_t nCount) {
    SortKey aKey[RANK_LIMIT];
    BmsObject* apFrom[RANK_LIMIT];
    int32_t anRank[RANK_LIMIT];
    for (int32_t i = 0; i < nCount; ++i) {
        aKey[i] = KeyOf(ppList[i], i);
        apFrom[i] = ppList[i];
        int32_t nRank = 0;
        for (int32_t j = 0; j < i; ++j) {
            const int32_t nBefore = IsLess(aKey[j], aKey[i]);
            nRank += nBefore;
            anRank[j] += 1 - nBefore;
        }
        anRank[i] = nRank;
    }
    for (int32_t i = 0; i < nCount; ++i) ppList[anRank[i]] = apFrom[i];
}

static void SortSpan(BmsObject** ppList, int32_t nCount, const SortSpace& space) {
    if (nCount <= RANK_LIMIT) {
        RankSpan(ppList, nCount);
    } else {
        MergeSpan(ppList, nCount, space);
    }
}

// Sorts measure by measure, which touches only as much of the space as the largest measure needs. False when
// the measures themselves are out of order.
static bool SortMeasures(BmsObject** ppList, int32_t nCount, const SortSpace& space) {
    for (int32_t nFirst = 0, nEnd; nFirst < nCount; nFirst = nEnd) {
        nEnd = nFirst + 1;
        while (nEnd < nCount && ppList[nEnd]->nMeasure == ppList[nFirst]->nMeasure) ++nEnd;
        SortSpan(ppList + nFirst, nEnd - nFirst, space);
        if (nFirst > 0 && CompareObjects(ppList[nFirst - 1], ppList[nFirst]) > 0) return false;
    }
    return true;
}

void SortObjects(BmsObject** ppList, int32_t nCount) {
    const size_t nSize = static_cast<size_t>(nCount);
    const SortSpace space = {new (std::nothrow) SortKey[nSize], new (std::nothrow) SortKey[nSize],
                             new (std::nothrow) BmsObject*[nSize]};
    if (!space.pKeys || !space.pSpare || !space.ppFrom) {  // slower, but needs no memory
        std::stable_sort(ppList, ppList + nCount,
                         [](const BmsObject* pA, const BmsObject* pB) { return CompareObjects(pA, pB) < 0; });
    } else if (!SortMeasures(ppList, nCount, space)) {
        SortSpan(ppList, nCount, space);
    }
    delete[] space.pKeys;
    delete[] space.pSpare;
    delete[] space.ppFrom;
}
