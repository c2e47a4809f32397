// The constants of the XA format, shared by decoder and encoder. docs/xa.md describes the format.
#pragma once

#include "platform/wintypes.h"

constexpr BYTE XA_MAGIC[4] = {'K', 'W', 'D', '1'};
constexpr BYTE XA_VERSION = 1;

// Bits per code. Fine mode is better; fast mode is less than half its size.
constexpr int XA_BITS_FAST = 4;
constexpr int XA_BITS_FINE = 10;

constexpr int XA_BLOCK_FRAMES = 32;
constexpr int XA_PARAM_BYTES = 2;  // per channel, at the head of a block: filter, range
constexpr int XA_MAX_CHANNELS = 2;
constexpr int XA_MAX_BLOCK_BYTES = XA_MAX_CHANNELS * (XA_PARAM_BYTES + XA_BLOCK_FRAMES * XA_BITS_FINE / 8);

constexpr DWORD XA_MIN_RATE = 100;        // Hz
constexpr DWORD XA_MAX_RATE = 200000;     // limit of sound buffers
constexpr DWORD XA_MAX_PCM = 0x7FFFFFFF;  // bytes of PCM in one sound

// Offsets of the header's fields. The gaps are written as 0 and never read.
constexpr int XA_AT_DATA_BYTES = 4;
constexpr int XA_AT_FRAMES = 8;
constexpr int XA_AT_VERSION = 12;
constexpr int XA_AT_BITS = 13;
constexpr int XA_AT_BLOCK_FRAMES = 14;
constexpr int XA_AT_CHANNELS = 15;
constexpr int XA_AT_RATE = 16;

// Second-order predictors, in units of 1/4096: next = (n1 * last + n2 * the one before + 2048) >> 12. They
// are pole pairs on a grid: real poles first, then radius 0.99 for tones, 0.9 and 0.7 for less tonal sounds.
struct XaFilter {
    int32_t n1;
    int32_t n2;
};
constexpr int XA_FILTERS = 32;
constexpr XaFilter XA_FILTER[XA_FILTERS] = {
    {0, 0},         {2048, 0},      {3686, 0},      {-2048, 0},    {-3686, 0},     {8151, -4055},
    {8109, -4014},  {8099, -4014},  {8066, -4014},  {7987, -4014}, {7834, -4014},  {7520, -4014},
    {7024, -4014},  {6213, -4014},  {4652, -4014},  {2099, -4014}, {-1408, -4014}, {-5213, -4014},
    {-7621, -4014}, {7373, -3318},  {7122, -3318},  {6385, -3318}, {4739, -3318},  {1908, -3318},
    {-1280, -3318}, {-4739, -3318}, {-6928, -3318}, {4966, -2007}, {2867, -2007},  {0, -2007},
    {-2867, -2007}, {-4966, -2007},
};

// A range byte is a scale in eighths of an octave: the low three bits are the mantissa, the rest is the
// exponent. Range 0 is a step of 1; every 8 ranges double it. The residual is code * (8 + mantissa) <<
// exponent >> 3.
constexpr int XA_RANGES = 112;
constexpr int32_t XaScale(int nRange) {
    return (8 + (nRange & 7)) << (nRange >> 3);
}
constexpr int32_t XaResidual(int32_t nCode, int32_t nScale) {
    return (nCode * nScale) >> 3;
}

constexpr int32_t XaPredict(const XaFilter& filter, int32_t nLast, int32_t nBefore) {
    return (filter.n1 * nLast + filter.n2 * nBefore + 2048) >> 12;
}
constexpr int32_t XaClamp(int32_t n) {
    return n < -32768 ? -32768 : n > 32767 ? 32767 : n;
}

// Bytes in a block of nFrames frames, 1 to XA_BLOCK_FRAMES.
constexpr int XaBlockBytes(int nChannels, int nBits, int nFrames) {
    return nChannels * XA_PARAM_BYTES + (nChannels * nBits * nFrames + 7) / 8;
}
