// WAV files decoded before the program converts them: while one thread loads, others decode. The program
// converts as before; when it comes to the very same bytes, the samples are there.
#pragma once

#include <functional>
#include <memory>

#include "platform/byteblock.h"
#include "platform/codec/acm.h"
#include "platform/codec/acm_codec.h"

struct DecodedSound {
    AcmFormat format;
    SharedBytes pFile;
    const BYTE* pSource;  // the data in the file
    DWORD nSource;        // bytes
    ByteBlock pcm;
    DWORD nUsed, nMade;  // bytes of source and samples, as a conversion returns them
    size_t Bytes() const { return pFile->Size() + pcm.Size(); }
};
using DecodedPtr = std::shared_ptr<const DecodedSound>;

constexpr size_t kWaveHead = 64;  // bytes that NeedsDecoding looks at
// Whether a WAV file that begins so has more to it than copying. False where its head does not tell.
bool NeedsDecoding(const BYTE* pHead, size_t nBytes);

// Larger sounds, file and samples together, are left to the program: they would hold up the others.
constexpr size_t kMostAhead = size_t{16} << 20;

// Null when the file cannot be decoded whole, has more than kMostAhead, or when mayHold refuses: it is asked
// for the bytes of the file and the samples. Safe on any thread.
DecodedPtr DecodeAhead(const SharedBytes& pFile, const std::function<bool(size_t nBytes)>& mayHold);

// What this thread's conversions may use until the next call, and which must live as long; null: nothing.
void OfferDecoded(const DecodedSound* pDecoded);
// Fills the header as the first conversion of a stream would. False: nothing fits.
bool TakeDecoded(const AcmFormat& format, ACMSTREAMHEADER* pHeader);
