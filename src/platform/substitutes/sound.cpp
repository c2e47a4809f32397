#include "platform/substitutes/sound.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "platform/codec/sndfile.h"

namespace {

constexpr size_t kHeader = 44;
constexpr size_t kChunkSamples = 32768;  // decoded at once

struct Input {
    const BYTE* p;
    sf_count_t nSize, nPos;
};

sf_count_t Length(void* pUser) {
    return static_cast<Input*>(pUser)->nSize;
}

sf_count_t Seek(sf_count_t nOffset, int nWhence, void* pUser) {
    auto* pInput = static_cast<Input*>(pUser);
    if (nWhence == SEEK_CUR) nOffset += pInput->nPos;
    if (nWhence == SEEK_END) nOffset += pInput->nSize;
    if (nOffset < 0) return -1;
    return pInput->nPos = nOffset;
}

sf_count_t Read(void* pBuffer, sf_count_t nBytes, void* pUser) {
    auto* pInput = static_cast<Input*>(pUser);
    const sf_count_t n =
        std::clamp<sf_count_t>(nBytes, 0, std::max<sf_count_t>(pInput->nSize - pInput->nPos, 0));
    if (n > 0) std::memcpy(pBuffer, pInput->p + pInput->nPos, static_cast<size_t>(n));
    pInput->nPos += n;
    return n;
}

sf_count_t Tell(void* pUser) {
    return static_cast<Input*>(pUser)->nPos;
}

// The library reads many more kinds. No file of a package should reach their readers.
bool HasKnownMagic(const BYTE* p, size_t nBytes) {
    if (nBytes < 4) return false;
    return std::memcmp(p, "OggS", 4) == 0 || std::memcmp(p, "fLaC", 4) == 0 ||
           std::memcmp(p, "ID3", 3) == 0 || (p[0] == 0xFF && (p[1] & 0xE0) == 0xE0);
}

bool IsSupported(const SF_INFO& info) {
    const int nType = info.format & SF_FORMAT_TYPEMASK;
    return (nType == SF_FORMAT_OGG || nType == SF_FORMAT_FLAC || nType == SF_FORMAT_MPEG) &&
           info.channels >= 1 && info.channels <= kMaxSoundChannels && info.samplerate >= 1 &&
           info.samplerate <= kMaxSoundRate;
}

// Rounds to nearest, ties to even. Adding 1.5 * 2^23 leaves the integer in the low bits of the float, which
// the compiler vectorises.
void ToSamples(const float* pSource, size_t nSamples, BYTE* pDest) {
    constexpr float kShift = 12582912.0f;
    for (size_t i = 0; i < nSamples; ++i) {
        float f = pSource[i] * 32768.0f;
        f = f == f ? f : 0.0f;
        f = f > -32768.0f ? f : -32768.0f;
        f = f < 32767.0f ? f : 32767.0f;
        const auto n = static_cast<int16_t>(std::bit_cast<uint32_t>(f + kShift));
        std::memcpy(pDest + 2 * i, &n, 2);
    }
}

void PutNumber(BYTE* p, size_t n, int nBytes) {
    for (int i = 0; i < nBytes; ++i) p[i] = static_cast<BYTE>(n >> (8 * i));
}

void WriteHeader(const SF_INFO& info, ByteBlock* pWav) {
    const size_t nData = pWav->Size() - kHeader, nChannels = static_cast<size_t>(info.channels);
    const size_t nRate = static_cast<size_t>(info.samplerate);
    BYTE* p = pWav->Data();
    std::memcpy(p, "RIFF", 4);
    PutNumber(p + 4, kHeader - 8 + nData, 4);
    std::memcpy(p + 8, "WAVEfmt ", 8);
    PutNumber(p + 16, 16, 4);
    PutNumber(p + 20, 1, 2);
    PutNumber(p + 22, nChannels, 2);
    PutNumber(p + 24, nRate, 4);
    PutNumber(p + 28, nRate * nChannels * 2, 4);
    PutNumber(p + 32, nChannels * 2, 2);
    PutNumber(p + 34, 16, 2);
    std::memcpy(p + 36, "data", 4);
    PutNumber(p + 40, nData, 4);
}

// Decodes as many samples as possible. False when there are none or the caller aborts.
bool ReadSamples(const CodecLibrary& library, SNDFILE* pFile, const SF_INFO& info, size_t nHeld,
                 const MayHold& mayHold, ByteBlock* pWav) {
    const size_t nChannels = static_cast<size_t>(info.channels);
    const size_t nFrameBytes = nChannels * 2;
    const size_t nMax = kHeader + kMaxSoundPcm / nFrameBytes * nFrameBytes;
    std::vector<float> chunk(kChunkSamples / nChannels * nChannels);
    size_t nSize = kHeader;
    while (nSize < nMax) {
        const size_t nFrames = std::min(chunk.size() / nChannels, (nMax - nSize) / nFrameBytes);
        const sf_count_t nRead = library.ReadFloats(pFile, chunk.data(), static_cast<sf_count_t>(nFrames));
        if (nRead <= 0) break;
        const size_t nSamples = static_cast<size_t>(nRead) * nChannels;
        if (mayHold && !mayHold(nHeld + nSize + nSamples * 2)) return false;
        if (!pWav->Grow(nSize + nSamples * 2)) return false;
        ToSamples(chunk.data(), nSamples, pWav->Data() + nSize);
        nSize += nSamples * 2;
    }
    return nSize > kHeader;
}

}  // namespace

bool SoundToWav(const BYTE* pFile, size_t nBytes, const MayHold& mayHold, ByteBlock* pWav) {
    if (nBytes > kMaxSoundFile || !HasKnownMagic(pFile, nBytes)) return false;
    const CodecLibrary* pLibrary = LoadCodecLibrary();
    if (!pLibrary) return false;
    Input input = {pFile, static_cast<sf_count_t>(nBytes), 0};
    SF_VIRTUAL_IO io = {Length, Seek, Read, nullptr, Tell};
    SF_INFO info = {};
    SNDFILE* pSound = pLibrary->OpenVirtual(&io, SFM_READ, &info, &input);
    if (!pSound) return false;
    const bool bRead = IsSupported(info) && ReadSamples(*pLibrary, pSound, info, nBytes, mayHold, pWav);
    pLibrary->Close(pSound);
    if (!bRead) return false;
    pWav->Trim();
    WriteHeader(info, pWav);
    return true;
}
