// Decoding by the codec library, fed with pieces of source data as they come.
#pragma once

#include "platform/codec/acm_codec.h"
#include "platform/codec/sndfile.h"

// The library reads files; this is one that never is on disk: a header made from the format, then the data of
// all calls, of which only the piece at hand can be read. What the codec keeps from block to block lives as
// long as this.
class AcmDecoder {
public:
    explicit AcmDecoder(const AcmFormat& format) : m_format(format) {}
    ~AcmDecoder() { Close(); }
    AcmDecoder(const AcmDecoder&) = delete;
    AcmDecoder& operator=(const AcmDecoder&) = delete;

    // Decodes nBlocks whole blocks at pSource to 16-bit samples. False when the library refuses the format or
    // gives fewer frames than the blocks hold; what is missing is left as it was.
    bool Decode(const BYTE* pSource, DWORD nBlocks, int16_t* pSamples);

    // MP3: decodes a whole sound, as far as nFrames. The frames made; 0 when the library gives up.
    DWORD DecodeAll(const BYTE* pSource, DWORD nBytes, DWORD nFrames, int16_t* pSamples);

private:
    bool Open(DWORD nDeclared);
    void Close();
    DWORD ReadFrames(DWORD nFrames, int16_t* pSamples);
    DWORD ReadFloatFrames(DWORD nFrames, int16_t* pSamples);

    static sf_count_t Length(void* pUser);
    static sf_count_t Seek(sf_count_t nOffset, int nWhence, void* pUser);
    static sf_count_t Read(void* pBuffer, sf_count_t nBytes, void* pUser);
    static sf_count_t Tell(void* pUser);

    AcmFormat m_format;
    const CodecLibrary* m_pLibrary = nullptr;  // once a file is open
    SNDFILE* m_pFile = nullptr;
    BYTE m_aHeader[kAcmHeaderMax];
    int64_t m_nHeader = 0;
    DWORD m_nDeclared = 0;  // bytes of data, as the library sees it
    int64_t m_nPos = 0;     // in the file
    const BYTE* m_pPiece = nullptr;
    int64_t m_nPieceStart = 0;  // its place in the data
    int64_t m_nPieceBytes = 0;
};
