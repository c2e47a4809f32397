// Loads a WAV file whole.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/sound/memory.h"
#include "sound/dsbuffer.h"
#include "sound/stream.h"
#include "system/diagnostics.h"

namespace {

constexpr DWORD MIN_FORMAT = 18;
// Every convertible format block is shorter. Of a longer one, the rest is not kept.
constexpr DWORD MAX_FORMAT = 4096;
// Zeroed bytes after the block, because the lengths declared in it may be wrong.
constexpr DWORD FORMAT_PADDING = 64;

constexpr FOURCC ID_RIFF = mmioFOURCC('R', 'I', 'F', 'F');
constexpr FOURCC ID_WAVE = mmioFOURCC('W', 'A', 'V', 'E');
constexpr FOURCC ID_FMT = mmioFOURCC('f', 'm', 't', ' ');
constexpr FOURCC ID_DATA = mmioFOURCC('d', 'a', 't', 'a');

MMRESULT FindChunk(HMMIO hFile, FOURCC ckid, MMCKINFO* pChunk) {
    *pChunk = {};
    pChunk->ckid = ckid;
    return mmioDescend(hFile, pChunk, nullptr, MMIO_FINDCHUNK);
}

// Bytes from the current position to the end of the file.
DWORD GetBytesLeft(HMMIO hFile) {
    const LONG nPos = mmioSeek(hFile, 0, SEEK_CUR);
    const LONG nEnd = mmioSeek(hFile, 0, SEEK_END);
    mmioSeek(hFile, nPos, SEEK_SET);
    return nPos >= 0 && nEnd > nPos ? static_cast<DWORD>(nEnd - nPos) : 0;
}

}  // namespace

int CDSBuffer::LoadWav(int bStream) {
    Term();
    if (OpenWav() != 0 || ReadWavFormat() != 0 || FindWavData() != 0 || OpenWavConverter() != 0) return 1;
    return IsStreamWanted(bStream) ? StartWavStream() : LoadWholeWav();
}

void CDSBuffer::CloseWavFile() {
    if (m_hFile != nullptr) mmioClose(static_cast<HMMIO>(m_hFile), 0);
    m_hFile = nullptr;
}

int CDSBuffer::OpenWav() {
    HMMIO hFile = mmioOpenA(m_szName, nullptr, MMIO_ALLOCBUF | MMIO_READ);
    m_hFile = hFile;
    if (hFile == nullptr) {
        DebugLog("CDSBuffer::LoadWav %s Open Error\n", m_szName);
        return 1;
    }
    MMCKINFO riff = {};
    if (mmioDescend(hFile, &riff, nullptr, 0) != MMSYSERR_NOERROR) {
        DebugLog("CDSBuffer::LoadWav RIFF DecError\n");
        CloseWavFile();
        return 1;
    }
    if (riff.ckid != ID_RIFF || riff.fccType != ID_WAVE) {
        DebugLog("CDSBuffer::LoadWav WAVE not found\n");
        CloseWavFile();
        return 1;
    }
    return 0;
}

int CDSBuffer::ReadWavFormat() {
    HMMIO hFile = static_cast<HMMIO>(m_hFile);
    MMCKINFO fmt;
    if (FindChunk(hFile, ID_FMT, &fmt) != MMSYSERR_NOERROR) {
        DebugLog("CDSBuffer::LoadWav fmt DecError\n");
        CloseWavFile();
        return 1;
    }
    const DWORD nFormat = std::max(fmt.cksize, MIN_FORMAT);
    const DWORD nKept = std::min(nFormat, MAX_FORMAT);
    const DWORD nAvailable = GetBytesLeft(hFile);
    m_pSrcFormat = static_cast<WAVEFORMATEX*>(std::calloc(1, nKept + FORMAT_PADDING));
    if (m_pSrcFormat == nullptr || nAvailable < nFormat ||
        mmioRead(hFile, m_pSrcFormat, static_cast<LONG>(nKept)) != static_cast<LONG>(nKept)) {
        DebugLog("CDSBuffer::LoadWav fmt read Error\n");
        CloseWavFile();
        return 1;
    }
    if (mmioAscend(hFile, &fmt, 0) != MMSYSERR_NOERROR) {
        DebugLog("CDSBuffer::LoadWav fmtAscError\n");
        CloseWavFile();
        FreeSrcFormat();
        return 1;
    }
    return 0;
}

int CDSBuffer::FindWavData() {
    HMMIO hFile = static_cast<HMMIO>(m_hFile);
    MMCKINFO data;
    if (FindChunk(hFile, ID_DATA, &data) != MMSYSERR_NOERROR) {
        DebugLog("CDSBuffer::LoadWav data DecError\n");
        CloseWavFile();
        FreeSrcFormat();
        return 1;
    }
    m_nDataLen = data.cksize;
    m_nDataPos = static_cast<DWORD>(mmioSeek(hFile, 0, SEEK_CUR));
    m_nKind = SOUND_KIND_WAV;
    return 0;
}

// The buffer gets the suggested format; the device converts rates and channels during playback.
int CDSBuffer::OpenWavConverter() {
    m_wfx = {};
    m_wfx.wFormatTag = WAVE_FORMAT_PCM;
    HACMSTREAM hAcm = nullptr;
    const char* pszFailed = nullptr;
    if (acmFormatSuggest(nullptr, m_pSrcFormat, &m_wfx, sizeof(m_wfx), ACM_FORMATSUGGESTF_WFORMATTAG) !=
        MMSYSERR_NOERROR) {
        pszFailed = "ACM SUGGEST ERROR";
    } else if (acmStreamOpen(&hAcm, nullptr, m_pSrcFormat, &m_wfx, nullptr, 0, 0,
                             ACM_STREAMOPENF_NONREALTIME) != MMSYSERR_NOERROR) {
        pszFailed = "ACM OPEN ERROR";
    } else if (acmStreamSize(hAcm, m_nDataLen, &m_nPcmLen, ACM_STREAMSIZEF_SOURCE) != MMSYSERR_NOERROR) {
        pszFailed = "Size(s2d)Get Error";
    }
    m_hAcm = hAcm;
    if (pszFailed == nullptr) return 0;
    DebugLog("CDSBuffer::LoadWav %s\n", pszFailed);
    CloseWavFile();
    FreeSrcFormat();
    return 1;
}

int CDSBuffer::LoadWholeWav() {
    HMMIO hFile = static_cast<HMMIO>(m_hFile);
    // The declared length may be wrong: allocates memory for the bytes in the file; the rest is silence.
    const DWORD nAvailable = std::min(m_nDataLen, GetBytesLeft(hFile));
    if (CreateDSB(m_nPcmLen) == 0) m_pSrc = static_cast<BYTE*>(std::malloc(std::max(nAvailable, DWORD{1})));
    if (m_pSrc == nullptr) {
        DebugLog("CDSBuffer::LoadWav DSBCreateError\n");
        CloseWavFile();
        FreeSrcFormat();
        return 1;
    }
    m_nSrcSize = m_nDataLen;
    const LONG nRead = mmioRead(hFile, m_pSrc, static_cast<LONG>(nAvailable));
    CloseWavFile();
    FreeSrcFormat();
    void* pBlock = nullptr;
    DWORD nBlock = 0;
    if (LockWhole(&pBlock, &nBlock) != DS_OK) {
        DebugLog("CDSBuffer::LoadWav LockError\n");
        FreeSrc();
        return 1;
    }
    const int nResult =
        ConvertWholeWav(static_cast<BYTE*>(pBlock), nBlock, static_cast<DWORD>(std::max(nRead, 0)));
    FreeSrc();
    if (m_pDSB->Unlock(pBlock, nBlock, nullptr, 0) != DS_OK && nResult == 0) {
        DebugLog("CDSBuffer::LoadWav UnlockError\n");
        return 1;
    }
    if (nResult == 0) CloseConverter();
    return nResult;
}

// Writes the converted samples, then silence. Silence comes last so that fresh memory is touched only once.
int CDSBuffer::ConvertWholeWav(BYTE* pBlock, DWORD nBlock, DWORD nRead) {
    HACMSTREAM hAcm = static_cast<HACMSTREAM>(m_hAcm);
    ACMSTREAMHEADER header = {};
    header.cbStruct = ACM_HEADER_SIZE;
    header.pbSrc = m_pSrc;
    header.cbSrcLength = nRead;
    header.pbDst = pBlock;
    header.cbDstLength = nBlock;
    DWORD nSilentFrom = 0;
    const char* pszFailed = nullptr;
    if (acmStreamPrepareHeader(hAcm, &header, 0) != MMSYSERR_NOERROR) {
        pszFailed = "PrepareError";
    } else if (acmStreamConvert(hAcm, &header, 0) != MMSYSERR_NOERROR) {
        pszFailed = "ConvertError";
    } else {
        nSilentFrom = std::min(header.cbDstLengthUsed, nBlock);
        if (acmStreamUnprepareHeader(hAcm, &header, 0) != MMSYSERR_NOERROR) pszFailed = "UnprepareError";
    }
    audio::FillSamples(pBlock + nSilentFrom, nBlock - nSilentFrom, GetSilence());
    if (pszFailed == nullptr) return 0;
    DebugLog("CDSBuffer::LoadWav %s\n", pszFailed);
    return 1;
}
