// Decodes with the codec library, fed with pieces of source data as they arrive.
#pragma once

#include "platform/codec/acm_codec.h"
#include "platform/codec/sndfile.h"

// The library reads files. This presents it with a virtual one: a header made from the format, followed by
// the data of all calls, of which only the current piece is readable. Lives as long as its AcmStream and
// keeps the codec's state from block to block.
class AcmDecoder {
public:
    explicit AcmDecoder(const AcmFormat& format) : m_format(format) {}
    ~AcmDecoder() { Close(); }
    AcmDecoder(const AcmDecoder&) = delete;
    AcmDecoder& operator=(const AcmDecoder&) = delete;

    // Decodes nBlocks whole blocks at pSource to 16-bit samples. False when the library rejects the format or
    // returns too few frames; the missing samples are unchanged.
    bool Decode(const BYTE* pSource, DWORD nBlocks, int16_t* pSamples);

    // MP3: decodes a whole sound, up to nFrames frames. Returns the frames decoded; 0 when the library fails.
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
    const CodecLibrary* m_pLibrary = nullptr;  // set once a file is open
    SNDFILE* m_pFile = nullptr;
    BYTE m_aHeader[kAcmHeaderMax];
    int64_t m_nHeader = 0;
    DWORD m_nDeclared = 0;  // bytes of data in the virtual file
    int64_t m_nPos = 0;     // in the virtual file
    const BYTE* m_pPiece = nullptr;
    int64_t m_nPieceStart = 0;  // offset of the piece in the data
    int64_t m_nPieceBytes = 0;
};
