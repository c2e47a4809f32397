#include "platform/codec/ima.h"

#include <algorithm>
#include <array>

#include "platform/bytes.h"

namespace {

constexpr int kSteps = 89, kCodes = 16;

// The step sizes of IMA's recommended practices for digital audio, 1992. Each is about a tenth larger than
// the one before it.
constexpr int kStepSize[kSteps] = {
    7,    8,     9,     10,    11,    12,    13,    14,    16,    17,    19,    21,    23,    25,   28,
    31,   34,    37,    41,    45,    50,    55,    60,    66,    73,    80,    88,    97,    107,  118,
    130,  143,   157,   173,   190,   209,   230,   253,   279,   307,   337,   371,   408,   449,  494,
    544,  598,   658,   724,   796,   876,   963,   1060,  1166,  1282,  1411,  1552,  1707,  1878, 2066,
    2272, 2499,  2749,  3024,  3327,  3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845, 8630,
    9493, 10442, 11487, 12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};

// What a code adds to the step index.
constexpr int kIndexChange[kCodes] = {-1, -1, -1, -1, 2, 4, 6, 8, -1, -1, -1, -1, 2, 4, 6, 8};

// What a code adds to the sample: an eighth of the step, and a whole, a half and a quarter of it for its
// lower three bits, each rounded down. The top bit makes the sum negative.
constexpr auto kChange = [] {
    std::array<std::array<int, kCodes>, kSteps> aTable{};
    for (int i = 0; i < kSteps; ++i) {
        for (int n = 0; n < kCodes; ++n) {
            const int nStep = kStepSize[i];
            const int nChange =
                (nStep >> 3) + (n & 1 ? nStep >> 2 : 0) + (n & 2 ? nStep >> 1 : 0) + (n & 4 ? nStep : 0);
            aTable[static_cast<size_t>(i)][static_cast<size_t>(n)] = n & 8 ? -nChange : nChange;
        }
    }
    return aTable;
}();

struct Channel {
    int nSample, nIndex;

    int16_t Next(unsigned nCode) {
        nSample = std::clamp(nSample + kChange[static_cast<size_t>(nIndex)][nCode], -32768, 32767);
        nIndex = std::clamp(nIndex + kIndexChange[nCode], 0, kSteps - 1);
        return static_cast<int16_t>(nSample);
    }
};

Channel ReadHead(const BYTE* p) {
    return {static_cast<int16_t>(ReadLe16(p)), std::min<int>(p[2], kSteps - 1)};
}

// Decodes one block. A constant number of channels keeps their states in registers.
template <size_t nChannels>
int16_t* DecodeBlock(const BYTE* p, const BYTE* pEnd, int16_t* pSamples) {
    Channel aChannel[nChannels];
    for (Channel& channel : aChannel) {
        channel = ReadHead(p);
        p += kImaHeadBytes;
        *pSamples++ = static_cast<int16_t>(channel.nSample);
    }
    for (; p < pEnd; p += kImaGroupBytes * nChannels) {
        for (size_t i = 0; i < kImaGroupBytes; ++i) {
            for (size_t c = 0; c < nChannels; ++c) {
                const unsigned nCodes = p[c * kImaGroupBytes + i];
                pSamples[c] = aChannel[c].Next(nCodes & 15);
                pSamples[c + nChannels] = aChannel[c].Next(nCodes >> 4);
            }
            pSamples += 2 * nChannels;
        }
    }
    return pSamples;
}

}  // namespace

void DecodeIma(const BYTE* pSource, DWORD nBlocks, DWORD nBlockBytes, DWORD nChannels, int16_t* pSamples) {
    for (; nBlocks > 0; --nBlocks, pSource += nBlockBytes) {
        pSamples = nChannels == 1 ? DecodeBlock<1>(pSource, pSource + nBlockBytes, pSamples)
                                  : DecodeBlock<2>(pSource, pSource + nBlockBytes, pSamples);
    }
}
