#include "platform/codec/acm_codec.h"

#include <algorithm>
#include <cstring>

#include "platform/bytes.h"
#include "platform/codec/ima.h"

namespace {

constexpr WORD kMaxChannels = 8, kMaxAdpcmChannels = 2;
constexpr WORD kExtensibleTail = 22;  // valid bits, speaker mask, sub-format
constexpr DWORD kGsmBlockBytes = 65, kGsmBlockFrames = 320;

// The format tag; for the extensible one, the tag in its sub-format.
WORD ResolveTag(const WAVEFORMATEX* pSource) {
    if (pSource->wFormatTag != WAVE_FORMAT_EXTENSIBLE) return pSource->wFormatTag;
    if (pSource->cbSize < kExtensibleTail) return 0;
    static const BYTE aGuidTail[14] = {0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    const BYTE* pGuid = reinterpret_cast<const BYTE*>(pSource) + sizeof(WAVEFORMATEX) + 6;
    if (std::memcmp(pGuid + 2, aGuidTail, sizeof(aGuidTail)) != 0) return 0;
    const WORD wTag = ReadLe16(pGuid);
    return wTag == WAVE_FORMAT_EXTENSIBLE ? WORD{0} : wTag;
}

// Some writers leave nBlockAlign at 0 or 1; the format tells it.
bool SetFrames(const WAVEFORMATEX& source, AcmMethod method, DWORD nBytesPerSample, AcmFormat* pFormat) {
    const DWORD nFrameBytes = nBytesPerSample * source.nChannels;
    if (source.nBlockAlign > 1 && source.nBlockAlign != nFrameBytes) return false;
    pFormat->method = method;
    pFormat->wBits = static_cast<WORD>(nBytesPerSample * 8);
    pFormat->nBlockBytes = static_cast<WORD>(nFrameBytes);
    pFormat->nBlockFrames = 1;
    return true;
}

bool SetPcm(const WAVEFORMATEX& source, AcmFormat* pFormat) {
    const DWORD nBytes = (source.wBitsPerSample + 7u) / 8;
    if (nBytes == 0 || nBytes > 4) return false;
    return SetFrames(source, nBytes <= 2 ? AcmMethod::kCopy : AcmMethod::kSamples, nBytes, pFormat);
}

bool SetFloat(const WAVEFORMATEX& source, AcmFormat* pFormat) {
    if (source.wBitsPerSample != 32 && source.wBitsPerSample != 64) return false;
    return SetFrames(source, AcmMethod::kFloats, source.wBitsPerSample / 8, pFormat);
}

// A block is a head with the first frames uncompressed, then 4-bit codes: nHeadBytes and nHeadFrames per
// channel.
bool SetAdpcm(const WAVEFORMATEX& source, DWORD nHeadBytes, DWORD nHeadFrames, AcmFormat* pFormat) {
    if (source.wBitsPerSample != 4 || source.nChannels > kMaxAdpcmChannels ||
        source.nBlockAlign <= nHeadBytes * source.nChannels)
        return false;
    pFormat->method = AcmMethod::kSamples;
    pFormat->wBits = 4;
    pFormat->nBlockBytes = source.nBlockAlign;
    pFormat->nBlockHead = nHeadBytes * source.nChannels;
    pFormat->nHeadFrames = nHeadFrames;
    pFormat->nBlockFrames = AcmPartFrames(*pFormat, source.nBlockAlign);
    return pFormat->nBlockFrames > nHeadFrames;
}

bool SetImaAdpcm(const WAVEFORMATEX& source, AcmFormat* pFormat) {
    if (source.nBlockAlign % (kImaGroupBytes * source.nChannels) != 0 ||
        !SetAdpcm(source, kImaHeadBytes, 1, pFormat))
        return false;
    pFormat->method = AcmMethod::kIma;
    return true;
}

bool SetGsm(const WAVEFORMATEX& source, AcmFormat* pFormat) {
    if (source.nChannels != 1 || source.nBlockAlign != kGsmBlockBytes) return false;
    pFormat->method = AcmMethod::kSamples;
    pFormat->nBlockBytes = kGsmBlockBytes;
    pFormat->nBlockFrames = kGsmBlockFrames;
    return true;
}

// The frame count of MP3 data is known only after decoding; the declared byte rate gives an estimate.
bool SetMp3(const WAVEFORMATEX& source, AcmFormat* pFormat) {
    if (source.nChannels > 2 || source.nAvgBytesPerSec == 0) return false;
    pFormat->method = AcmMethod::kFloats;
    pFormat->nBlockBytes = pFormat->nBlockFrames = 1;
    pFormat->nBytesPerSec = source.nAvgBytesPerSec;
    return true;
}

bool SetSource(const WAVEFORMATEX& source, AcmFormat* pFormat) {
    switch (pFormat->wTag) {
        case WAVE_FORMAT_PCM:
            return SetPcm(source, pFormat);
        case WAVE_FORMAT_IEEE_FLOAT:
            return SetFloat(source, pFormat);
        case WAVE_FORMAT_ALAW:
        case WAVE_FORMAT_MULAW:
            return SetFrames(source, AcmMethod::kSamples, 1, pFormat);
        case WAVE_FORMAT_ADPCM:
            return SetAdpcm(source, 7, 2, pFormat);
        case WAVE_FORMAT_IMA_ADPCM:
            return SetImaAdpcm(source, pFormat);
        case WAVE_FORMAT_GSM610:
            return SetGsm(source, pFormat);
        case WAVE_FORMAT_MPEGLAYER3:
            return SetMp3(source, pFormat);
        default:
            return false;
    }
}

class ByteWriter {
public:
    explicit ByteWriter(BYTE* p) : m_pStart(p), m_p(p) {}
    void Name(const char* psz) { m_p = std::copy(psz, psz + 4, m_p); }
    void Number(DWORD n, int nBytes) {
        for (; nBytes > 0; --nBytes, n >>= 8) *m_p++ = static_cast<BYTE>(n);
    }
    DWORD Length() const { return static_cast<DWORD>(m_p - m_pStart); }

private:
    BYTE* m_pStart;
    BYTE* m_p;
};

// Microsoft ADPCM codes use seven predictors, which every file repeats in its format block.
constexpr int kPredictors[7][2] = {{256, 0}, {512, -256}, {0, 0},     {192, 64},
                                   {240, 0}, {460, -208}, {392, -232}};

void WriteExtension(const AcmFormat& format, ByteWriter* pWriter) {
    if (format.wTag == WAVE_FORMAT_ADPCM) {
        pWriter->Number(4 + sizeof(kPredictors) / 2, 2);
        pWriter->Number(format.nBlockFrames, 2);
        pWriter->Number(7, 2);
        for (const auto& pair : kPredictors) {
            pWriter->Number(static_cast<DWORD>(pair[0]), 2);
            pWriter->Number(static_cast<DWORD>(pair[1]), 2);
        }
    } else if (format.wTag == WAVE_FORMAT_MPEGLAYER3) {
        pWriter->Number(12, 2);
        pWriter->Number(1, 2);     // MPEG
        pWriter->Number(2, 4);     // frames are not padded to blocks
        pWriter->Number(1152, 2);  // block bytes, frames per block, delay: unused
        pWriter->Number(1, 2);
        pWriter->Number(0, 2);
    } else if (format.wTag == WAVE_FORMAT_GSM610) {
        pWriter->Number(2, 2);
        pWriter->Number(format.nBlockFrames, 2);
    } else {
        pWriter->Number(0, 2);
    }
}

DWORD ExtensionBytes(const AcmFormat& format) {
    if (format.wTag == WAVE_FORMAT_ADPCM) return 4 + sizeof(kPredictors) / 2;
    if (format.wTag == WAVE_FORMAT_MPEGLAYER3) return 12;
    return format.wTag == WAVE_FORMAT_GSM610 ? 2 : 0;
}

}  // namespace

bool DescribeAcmFormat(const WAVEFORMATEX* pSource, AcmFormat* pFormat) {
    *pFormat = {};
    pFormat->wTag = ResolveTag(pSource);
    if (pSource->nChannels == 0 || pSource->nChannels > kMaxChannels || pSource->nSamplesPerSec == 0)
        return false;
    if (!SetSource(*pSource, pFormat)) return false;
    WAVEFORMATEX& pcm = pFormat->wfxPcm;
    pcm.wFormatTag = WAVE_FORMAT_PCM;
    pcm.nChannels = pSource->nChannels;
    pcm.nSamplesPerSec = pSource->nSamplesPerSec;
    pcm.wBitsPerSample = pFormat->method == AcmMethod::kCopy ? pFormat->wBits : WORD{16};
    pcm.nBlockAlign = static_cast<WORD>(pcm.nChannels * pcm.wBitsPerSample / 8);
    const uint64_t nBytesPerSec = uint64_t{pcm.nSamplesPerSec} * pcm.nBlockAlign;
    pcm.nAvgBytesPerSec = static_cast<DWORD>(nBytesPerSec);
    return nBytesPerSec <= UINT32_MAX;
}

DWORD AcmPartFrames(const AcmFormat& format, DWORD nBytes) {
    if (format.nBlockHead == 0 || nBytes < format.nBlockHead) return 0;
    const DWORD nChannels = format.nBlockHead / (format.wTag == WAVE_FORMAT_ADPCM ? 7 : 4);
    const DWORD nGroup = format.wTag == WAVE_FORMAT_ADPCM ? 1 : 4 * nChannels;
    return (nBytes - format.nBlockHead) / nGroup * nGroup * 2 / nChannels + format.nHeadFrames;
}

DWORD AcmPcmBytes(const AcmFormat& format, DWORD nSourceBytes) {
    const uint64_t nFrames = format.nBytesPerSec != 0
                                 ? uint64_t{nSourceBytes} * format.wfxPcm.nSamplesPerSec / format.nBytesPerSec
                                 : uint64_t{nSourceBytes / format.nBlockBytes} * format.nBlockFrames +
                                       AcmPartFrames(format, nSourceBytes % format.nBlockBytes);
    const DWORD nFrame = format.wfxPcm.nBlockAlign;
    return static_cast<DWORD>(std::min<uint64_t>(nFrames, UINT32_MAX / nFrame) * nFrame);
}

DWORD AcmSourceBytes(const AcmFormat& format, DWORD nPcmBytes) {
    const DWORD nBlocks = nPcmBytes / (format.wfxPcm.nBlockAlign * format.nBlockFrames);
    const uint64_t nBytes = uint64_t{std::max(nBlocks, DWORD{1})} * format.nBlockBytes;
    return static_cast<DWORD>(
        std::min<uint64_t>(nBytes, UINT32_MAX / format.nBlockBytes * format.nBlockBytes));
}

DWORD WriteAcmHeader(const AcmFormat& format, DWORD nDataBytes, BYTE* pHeader) {
    ByteWriter writer(pHeader);
    const DWORD nExtension = ExtensionBytes(format);
    writer.Name("RIFF");
    writer.Number(nDataBytes + 4 + 8 + 18 + nExtension + 8, 4);
    writer.Name("WAVE");
    writer.Name("fmt ");
    writer.Number(18 + nExtension, 4);
    writer.Number(format.wTag, 2);
    writer.Number(format.wfxPcm.nChannels, 2);
    // Except for MP3, the rate does not affect the samples, and the library need not see a strange one.
    writer.Number(format.nBytesPerSec != 0 ? format.wfxPcm.nSamplesPerSec : 44100, 4);
    writer.Number(44100 / format.nBlockFrames * format.nBlockBytes, 4);
    writer.Number(format.nBlockBytes, 2);
    writer.Number(format.wBits, 2);
    WriteExtension(format, &writer);
    writer.Name("data");
    writer.Number(nDataBytes, 4);
    return writer.Length();
}
