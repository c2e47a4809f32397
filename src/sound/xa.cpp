// Loads an XA file whole.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/bytes.h"
#include "platform/sound/memory.h"
#include "sound/dsbuffer.h"
#include "sound/stream.h"
#include "sound/xadec.h"
#include "system/diagnostics.h"

namespace {

constexpr int AT_DATA_BYTES = 4, AT_FRAMES = 8, AT_CHANNELS = 15;  // offsets in the header

FileStream* FileOf(const CDSBuffer& sound) {
    return static_cast<FileStream*>(sound.m_hFile);
}

// Bytes from the current position to the end of the file.
DWORD GetBytesLeft(FileStream* pFile) {
    const int64_t nPos = FileTell(pFile);
    if (nPos < 0 || FileSeek(pFile, 0, SEEK_END) != 0) return 0;
    const int64_t nEnd = FileTell(pFile);
    FileSeek(pFile, nPos, SEEK_SET);
    return nEnd > nPos ? static_cast<DWORD>(nEnd - nPos) : 0;
}

}  // namespace

int CDSBuffer::LoadXA(int bStream) {
    Term();
    BYTE aHeader[XA_HEADER_SIZE];
    if (OpenXA(aHeader) != 0) return 1;
    // 64 bits: impossible lengths then become a tail that is never reached.
    const uint64_t nExact = uint64_t{aHeader[AT_CHANNELS]} * ReadLe32(aHeader + AT_FRAMES) * 2;
    return IsStreamWanted(bStream) ? StartXAStream(nExact) : LoadWholeXA(nExact);
}

void CDSBuffer::CloseXAFile() {
    if (m_hFile != nullptr) FileClose(FileOf(*this));
    m_hFile = nullptr;
}

// Leaves any other file to the WAV loader silently.
int CDSBuffer::OpenXA(BYTE* pHeader) {
    m_hFile = FileOpen(m_szName, "rb");
    if (m_hFile == nullptr) return 1;
    if (FileRead(pHeader, 1, XA_HEADER_SIZE, FileOf(*this)) != XA_HEADER_SIZE ||
        std::memcmp(pHeader, "KWD1", 4) != 0) {
        CloseXAFile();
        return 1;
    }
    m_nDataLen = ReadLe32(pHeader + AT_DATA_BYTES);
    m_nDataPos = static_cast<DWORD>(FileTell(FileOf(*this)));
    m_hAcm = xaDecodeOpen(pHeader, &m_wfx);
    if (m_hAcm == nullptr) {
        DebugLog("CDSBuffer::LoadXA DecodeOpenError\n");
        CloseXAFile();
        return 1;
    }
    m_nKind = SOUND_KIND_XA;
    if (xaDecodeSize(m_hAcm, m_nDataLen, &m_nPcmLen) == 0) {
        DebugLog("CDSBuffer::LoadXA DecodeSizeError\n");
        CloseXAFile();
        return 1;
    }
    if (m_wfx.nAvgBytesPerSec == 0)
        m_wfx.nAvgBytesPerSec = m_wfx.wBitsPerSample / 8u * m_wfx.nChannels * m_wfx.nSamplesPerSec;
    return 0;
}

int CDSBuffer::LoadWholeXA(uint64_t nExact) {
    const DWORD nAvailable = std::min(m_nDataLen, GetBytesLeft(FileOf(*this)));
    if (CreateDSB(m_nPcmLen) == 0) m_pSrc = static_cast<BYTE*>(std::malloc(std::max(nAvailable, DWORD{1})));
    if (m_pSrc == nullptr) {
        DebugLog("CDSBuffer::LoadXA DSBCreateError\n");
        CloseXAFile();
        return 1;
    }
    m_nSrcSize = m_nDataLen;
    const size_t nRead = FileRead(m_pSrc, 1, nAvailable, FileOf(*this));
    CloseXAFile();
    xaDecodeEndAt(m_hAcm, static_cast<DWORD>(nRead));
    void* pBlock = nullptr;
    DWORD nBlock = 0;
    if (LockWhole(&pBlock, &nBlock) != DS_OK) {
        DebugLog("CDSBuffer::LoadXA LockError\n");
        FreeSrc();
        return 1;
    }
    const int nResult = ConvertWholeXA(static_cast<BYTE*>(pBlock), nBlock, static_cast<DWORD>(nRead), nExact);
    FreeSrc();
    const HRESULT hr = m_pDSB->Unlock(pBlock, nBlock, nullptr, 0);
    if (nResult != 0) return 1;
    if (hr != DS_OK) {
        LogDSoundResult(hr);
        DebugLog("CDSBuffer::LoadXA UnlockError\n");
        return 1;
    }
    CloseConverter();
    return 0;
}

// Writes the decoded samples up to the exact length in the header, then silence.
int CDSBuffer::ConvertWholeXA(BYTE* pBlock, DWORD nBlock, DWORD nRead, uint64_t nExact) {
    XaConvertBlock convert = {};
    convert.pSrc = m_pSrc;
    convert.nSrcLen = nRead;
    convert.pDst = pBlock;
    convert.nDstBufLen = nBlock;
    const bool bDone = xaDecodeConvert(m_hAcm, &convert) != 0;
    // After an error the decoded samples stay: they are the sound up to the damage.
    const DWORD nMade = std::min(convert.nDstUsed, nBlock);
    const DWORD nSilentFrom = static_cast<DWORD>(std::min<uint64_t>(nMade, nExact));
    audio::FillSamples(pBlock + nSilentFrom, nBlock - nSilentFrom, GetSilence());
    if (bDone) return 0;
    DebugLog("CDSBuffer::LoadXA Convert\n");
    return 1;
}
