#include "platform/codec/acm_decoder.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace {

// The data length declared to the library, which counts bytes and frames in 31 bits. After that much data, a
// new virtual file begins.
DWORD DeclaredBytes(const AcmFormat& format) {
    constexpr DWORD kMost = 0x70000000;
    return kMost / std::max(format.nBlockBytes, format.nBlockFrames) * format.nBlockBytes;
}

int16_t ToSample(float f) {
    if (!(f == f)) return 0;
    return static_cast<int16_t>(std::lrintf(std::clamp(f * 32768.0f, -32768.0f, 32767.0f)));
}

}  // namespace

bool AcmDecoder::Decode(const BYTE* pSource, DWORD nBlocks, int16_t* pSamples) {
    const int64_t nBytes = int64_t{nBlocks} * m_format.nBlockBytes;
    m_nPieceStart += m_nPieceBytes;
    if (m_nPieceStart + nBytes > DeclaredBytes(m_format)) Close();
    m_pPiece = pSource;
    m_nPieceBytes = nBytes;
    if (m_pFile == nullptr && !Open(DeclaredBytes(m_format))) return false;
    const DWORD nFrames = nBlocks * m_format.nBlockFrames;
    const DWORD nMade = m_format.method == AcmMethod::kFloats ? ReadFloatFrames(nFrames, pSamples)
                                                              : ReadFrames(nFrames, pSamples);
    m_pPiece = nullptr;
    return nMade == nFrames;
}

DWORD AcmDecoder::DecodeAll(const BYTE* pSource, DWORD nBytes, DWORD nFrames, int16_t* pSamples) {
    Close();
    m_pPiece = pSource;
    m_nPieceBytes = nBytes;
    const DWORD nMade = Open(nBytes) ? ReadFloatFrames(nFrames, pSamples) : 0;
    m_pPiece = nullptr;
    Close();
    return nMade;
}

// Opened only when the first piece is available, because some codecs decode their first block while opening.
bool AcmDecoder::Open(DWORD nDeclared) {
    m_pLibrary = LoadCodecLibrary();
    if (m_pLibrary == nullptr) return false;
    m_nPieceStart = 0;
    m_nPos = 0;
    m_nDeclared = nDeclared;
    m_nHeader = WriteAcmHeader(m_format, nDeclared, m_aHeader);
    SF_VIRTUAL_IO io = {Length, Seek, Read, nullptr, Tell};
    SF_INFO info = {};
    m_pFile = m_pLibrary->OpenVirtual(&io, SFM_READ, &info, this);
    if (m_pFile != nullptr && info.channels == m_format.wfxPcm.nChannels) return true;
    Close();
    return false;
}

void AcmDecoder::Close() {
    if (m_pFile != nullptr) m_pLibrary->Close(m_pFile);
    m_pFile = nullptr;
    m_nPieceStart = m_nPieceBytes = 0;
}

DWORD AcmDecoder::ReadFrames(DWORD nFrames, int16_t* pSamples) {
    return static_cast<DWORD>(std::max<sf_count_t>(m_pLibrary->ReadShorts(m_pFile, pSamples, nFrames), 0));
}

DWORD AcmDecoder::ReadFloatFrames(DWORD nFrames, int16_t* pSamples) {
    float aBlock[2048];
    const DWORD nChannels = m_format.wfxPcm.nChannels;
    const DWORD nRoom = static_cast<DWORD>(std::size(aBlock)) / nChannels;
    DWORD nMade = 0;
    while (nMade < nFrames) {
        const DWORD nWanted = std::min(nFrames - nMade, nRoom);
        const sf_count_t nRead = m_pLibrary->ReadFloats(m_pFile, aBlock, nWanted);
        if (nRead <= 0) break;
        pSamples = std::transform(aBlock, aBlock + nRead * nChannels, pSamples, ToSample);
        nMade += static_cast<DWORD>(nRead);
    }
    return nMade;
}

sf_count_t AcmDecoder::Length(void* pUser) {
    const auto* pThis = static_cast<AcmDecoder*>(pUser);
    return pThis->m_nHeader + pThis->m_nDeclared;
}

sf_count_t AcmDecoder::Seek(sf_count_t nOffset, int nWhence, void* pUser) {
    auto* pThis = static_cast<AcmDecoder*>(pUser);
    if (nWhence == SEEK_CUR) nOffset += pThis->m_nPos;
    if (nWhence == SEEK_END) nOffset += Length(pUser);
    if (nOffset < 0) return -1;
    return pThis->m_nPos = nOffset;
}

sf_count_t AcmDecoder::Read(void* pBuffer, sf_count_t nBytes, void* pUser) {
    auto* pThis = static_cast<AcmDecoder*>(pUser);
    BYTE* pOut = static_cast<BYTE*>(pBuffer);
    sf_count_t nDone = 0;
    if (pThis->m_nPos < pThis->m_nHeader) {
        nDone = std::min<sf_count_t>(nBytes, pThis->m_nHeader - pThis->m_nPos);
        std::memcpy(pOut, pThis->m_aHeader + pThis->m_nPos, static_cast<size_t>(nDone));
        pThis->m_nPos += nDone;
    }
    const int64_t nInPiece = pThis->m_nPos - pThis->m_nHeader - pThis->m_nPieceStart;
    if (nDone < nBytes && pThis->m_pPiece != nullptr && nInPiece >= 0 && nInPiece < pThis->m_nPieceBytes) {
        const sf_count_t nCopied = std::min<sf_count_t>(nBytes - nDone, pThis->m_nPieceBytes - nInPiece);
        std::memcpy(pOut + nDone, pThis->m_pPiece + nInPiece, static_cast<size_t>(nCopied));
        pThis->m_nPos += nCopied;
        nDone += nCopied;
    }
    return nDone;
}

sf_count_t AcmDecoder::Tell(void* pUser) {
    return static_cast<AcmDecoder*>(pUser)->m_nPos;
}
