#include <turbojpeg.h>

#include "platform/library.h"
#include "platform/substitutes/picture.h"

namespace {

struct Turbo {
    decltype(&tjInitDecompress) InitDecompress = nullptr;
    decltype(&tjDecompressHeader3) DecompressHeader3 = nullptr;
    decltype(&tjDecompress2) Decompress2 = nullptr;
    decltype(&tjGetErrorCode) GetErrorCode = nullptr;
    decltype(&tjDestroy) Destroy = nullptr;
};

bool FindTurbo(Library* pLibrary, Turbo* pCalls) {
    return pLibrary->Find("tjInitDecompress", &pCalls->InitDecompress) &&
           pLibrary->Find("tjDecompressHeader3", &pCalls->DecompressHeader3) &&
           pLibrary->Find("tjDecompress2", &pCalls->Decompress2) &&
           pLibrary->Find("tjGetErrorCode", &pCalls->GetErrorCode) &&
           pLibrary->Find("tjDestroy", &pCalls->Destroy);
}

// Converts CMYK, stored inverted, to BGR.
void CmykToBgr(BYTE* pPixels, size_t nPixels) {
    for (size_t i = 0; i < nPixels; ++i, pPixels += 4) {
        const unsigned nBlack = pPixels[3];
        const BYTE nRed = static_cast<BYTE>((pPixels[0] * nBlack + 127) / 255);
        pPixels[1] = static_cast<BYTE>((pPixels[1] * nBlack + 127) / 255);
        pPixels[0] = static_cast<BYTE>((pPixels[2] * nBlack + 127) / 255);
        pPixels[2] = nRed;
        pPixels[3] = 0;
    }
}

bool Decode(const Turbo& turbo, tjhandle hTurbo, const BYTE* pFile, size_t nBytes, ByteBlock* pBmp) {
    int nWidth = 0, nHeight = 0, nSampling = 0, nColors = 0;
    const auto nSize = static_cast<unsigned long>(nBytes);
    if (turbo.DecompressHeader3(hTurbo, pFile, nSize, &nWidth, &nHeight, &nSampling, &nColors) != 0)
        return false;
    const bool bCmyk = nColors == TJCS_CMYK || nColors == TJCS_YCCK;
    const BmpRows rows = StartBmp(nWidth, nHeight, bCmyk ? 32 : 24, pBmp);
    if (!rows.pBottom) return false;
    // Limits the scans: hundreds of them fit into few bytes and would take minutes.
    const int nFlags = TJFLAG_BOTTOMUP | TJFLAG_LIMITSCANS | TJFLAG_ACCURATEDCT;
    if (turbo.Decompress2(hTurbo, pFile, nSize, rows.pBottom, nWidth, static_cast<int>(rows.nStride), nHeight,
                          bCmyk ? TJPF_CMYK : TJPF_BGR, nFlags) != 0 &&
        turbo.GetErrorCode(hTurbo) != TJERR_WARNING)
        return false;
    if (bCmyk) CmykToBgr(rows.pBottom, static_cast<size_t>(nWidth) * static_cast<size_t>(nHeight));
    return true;
}

}  // namespace

bool JpegToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp) {
    const Turbo* pTurbo = LoadLibraryCalls("libturbojpeg.so.0", FindTurbo);
    if (!pTurbo) return false;
    tjhandle hTurbo = pTurbo->InitDecompress();
    if (!hTurbo) return false;
    const bool bRead = Decode(*pTurbo, hTurbo, pFile, nBytes, pBmp);
    pTurbo->Destroy(hTurbo);
    return bRead;
}
