// Compiled with -O3: the loops are written so that the compiler vectorises them.
#include "platform/graphics/surface_copy.h"

#include <cstring>

namespace {

// Selects without a branch, because key and picture pixels alternate too often for branch prediction.
[[gnu::always_inline]] inline void KeyedRows(uint32_t* pDest, size_t nDestStride, const uint32_t* pSource,
                                             size_t nSourceStride, size_t nWidth, size_t nHeight,
                                             uint32_t nKey) {
    for (size_t y = 0; y < nHeight; ++y) {
        uint32_t* __restrict d = pDest + y * nDestStride;
        const uint32_t* __restrict s = pSource + y * nSourceStride;
        for (size_t x = 0; x < nWidth; ++x) d[x] = s[x] == nKey ? d[x] : s[x];
    }
}

using KeyedCopy = void (*)(uint32_t*, size_t, const uint32_t*, size_t, size_t, size_t, uint32_t);

void KeyedPlain(uint32_t* pDest, size_t nDestStride, const uint32_t* pSource, size_t nSourceStride,
                size_t nWidth, size_t nHeight, uint32_t nKey) {
    KeyedRows(pDest, nDestStride, pSource, nSourceStride, nWidth, nHeight, nKey);
}

#if defined(__x86_64__)
[[gnu::target("avx2")]] void KeyedAvx2(uint32_t* pDest, size_t nDestStride, const uint32_t* pSource,
                                       size_t nSourceStride, size_t nWidth, size_t nHeight, uint32_t nKey) {
    KeyedRows(pDest, nDestStride, pSource, nSourceStride, nWidth, nHeight, nKey);
}
KeyedCopy ChooseKeyed() {
    return __builtin_cpu_supports("avx2") ? KeyedAvx2 : KeyedPlain;
}
#else
KeyedCopy ChooseKeyed() {
    return KeyedPlain;
}
#endif

}  // namespace

void CopyPixels(uint32_t* pDest, size_t nDestStride, const uint32_t* pSource, size_t nSourceStride,
                size_t nWidth, size_t nHeight) {
    for (size_t y = 0; y < nHeight; ++y) {
        std::memcpy(pDest, pSource, nWidth * sizeof(uint32_t));
        pDest += nDestStride;
        pSource += nSourceStride;
    }
}

void CopyPixelsKeyed(uint32_t* pDest, size_t nDestStride, const uint32_t* pSource, size_t nSourceStride,
                     size_t nWidth, size_t nHeight, uint32_t nKey) {
    static const KeyedCopy pfnCopy = ChooseKeyed();
    pfnCopy(pDest, nDestStride, pSource, nSourceStride, nWidth, nHeight, nKey);
}

void FillPixels(uint32_t* pDest, size_t nDestStride, size_t nWidth, size_t nHeight, uint32_t nValue) {
    for (size_t y = 0; y < nHeight; ++y, pDest += nDestStride) {
        for (size_t x = 0; x < nWidth; ++x) pDest[x] = nValue;
    }
}
