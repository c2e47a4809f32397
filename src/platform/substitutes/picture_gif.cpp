#include <gif_lib.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/library.h"
#include "platform/substitutes/picture.h"

namespace {

struct Giflib {
    decltype(&DGifOpen) Open = nullptr;
    decltype(&DGifCloseFile) CloseFile = nullptr;
    decltype(&DGifGetRecordType) GetRecordType = nullptr;
    decltype(&DGifGetImageDesc) GetImageDesc = nullptr;
    decltype(&DGifGetLine) GetLine = nullptr;
    decltype(&DGifGetExtension) GetExtension = nullptr;
    decltype(&DGifGetExtensionNext) GetExtensionNext = nullptr;
    decltype(&DGifExtensionToGCB) ExtensionToGCB = nullptr;
};

bool FindGiflib(Library* pLibrary, Giflib* pCalls) {
    return pLibrary->Find("DGifOpen", &pCalls->Open) && pLibrary->Find("DGifCloseFile", &pCalls->CloseFile) &&
           pLibrary->Find("DGifGetRecordType", &pCalls->GetRecordType) &&
           pLibrary->Find("DGifGetImageDesc", &pCalls->GetImageDesc) &&
           pLibrary->Find("DGifGetLine", &pCalls->GetLine) &&
           pLibrary->Find("DGifGetExtension", &pCalls->GetExtension) &&
           pLibrary->Find("DGifGetExtensionNext", &pCalls->GetExtensionNext) &&
           pLibrary->Find("DGifExtensionToGCB", &pCalls->ExtensionToGCB);
}

struct Input {
    const BYTE* p;
    size_t nLeft;
};

int ReadInput(GifFileType* pGif, GifByteType* pBuffer, int nBytes) {
    auto* pInput = static_cast<Input*>(pGif->UserData);
    const size_t n = std::min(pInput->nLeft, static_cast<size_t>(std::max(nBytes, 0)));
    std::memcpy(pBuffer, pInput->p, n);
    pInput->p += n;
    pInput->nLeft -= n;
    return static_cast<int>(n);
}

// Reads up to the first picture's description. *pnClear: the transparent index, or -1.
bool FindPicture(const Giflib& lib, GifFileType* pGif, int* pnClear) {
    for (;;) {
        GifRecordType nType;
        if (lib.GetRecordType(pGif, &nType) != GIF_OK) return false;
        if (nType == IMAGE_DESC_RECORD_TYPE) return lib.GetImageDesc(pGif) == GIF_OK;
        if (nType != EXTENSION_RECORD_TYPE) return false;
        int nCode = 0;
        GifByteType* pPart = nullptr;
        if (lib.GetExtension(pGif, &nCode, &pPart) != GIF_OK) return false;
        while (pPart) {
            GraphicsControlBlock control;
            if (nCode == GRAPHICS_EXT_FUNC_CODE &&
                lib.ExtensionToGCB(pPart[0], pPart + 1, &control) == GIF_OK)
                *pnClear = control.TransparentColor;
            if (lib.GetExtensionNext(pGif, &pPart) != GIF_OK) return false;
        }
    }
}

// The row of the picture that is stored n-th in the file.
int RowInFile(int n, int nRows, bool bInterlaced) {
    if (!bInterlaced) return n;
    static constexpr int kPasses[4][2] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    for (const auto& [nFirst, nStep] : kPasses) {
        const int nInPass = nRows > nFirst ? (nRows - nFirst + nStep - 1) / nStep : 0;
        if (n < nInPass) return nFirst + n * nStep;
        n -= nInPass;
    }
    return nRows - 1;
}

struct Screen {
    BmpRows rows;
    int nWidth, nHeight;
};

void DrawRow(const Screen& screen, const GifImageDesc& place, int y, const BYTE* pIndexes,
             const ColorMapObject& colors, int nClear) {
    const int nLine = place.Top + y;
    if (nLine < 0 || nLine >= screen.nHeight) return;
    BYTE* pRow = screen.rows.pBottom + static_cast<size_t>(screen.nHeight - 1 - nLine) * screen.rows.nStride;
    for (int x = std::max(0, -place.Left); x < place.Width && place.Left + x < screen.nWidth; ++x) {
        const int nIndex = pIndexes[x];
        if (nIndex == nClear || nIndex >= colors.ColorCount) continue;
        const GifColorType& color = colors.Colors[nIndex];
        BYTE* pPixel = pRow + static_cast<size_t>(place.Left + x) * 3;
        pPixel[0] = color.Blue;
        pPixel[1] = color.Green;
        pPixel[2] = color.Red;
    }
}

bool Decode(const Giflib& lib, GifFileType* pGif, ByteBlock* pBmp) {
    int nClear = -1;
    if (!FindPicture(lib, pGif, &nClear)) return false;
    const GifImageDesc& place = pGif->Image;
    const ColorMapObject* pColors = place.ColorMap ? place.ColorMap : pGif->SColorMap;
    const bool bInside = place.Width >= 1 && place.Height >= 1 && place.Width <= kMaxPictureSide &&
                         place.Height <= kMaxPictureSide;
    if (!bInside || !pColors) return false;
    Screen screen = {{}, pGif->SWidth, pGif->SHeight};
    if (screen.nWidth < 1) screen.nWidth = place.Left + place.Width;
    if (screen.nHeight < 1) screen.nHeight = place.Top + place.Height;
    screen.rows = StartBmp(screen.nWidth, screen.nHeight, 24, pBmp);
    if (!screen.rows.pBottom) return false;
    std::memset(screen.rows.pBottom, 0, screen.rows.nStride * static_cast<size_t>(screen.nHeight));
    std::vector<BYTE> indexes(static_cast<size_t>(place.Width));
    for (int n = 0; n < place.Height; ++n) {
        if (lib.GetLine(pGif, indexes.data(), place.Width) != GIF_OK) return false;
        DrawRow(screen, place, RowInFile(n, place.Height, place.Interlace), indexes.data(), *pColors, nClear);
    }
    return true;
}

}  // namespace

bool GifToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp) {
    const Giflib* pLib = LoadLibraryCalls("libgif.so.7", FindGiflib);
    if (!pLib) return false;
    Input input = {pFile, nBytes};
    GifFileType* pGif = pLib->Open(&input, ReadInput, nullptr);
    if (!pGif) return false;
    const bool bRead = Decode(*pLib, pGif, pBmp);
    pLib->CloseFile(pGif, nullptr);
    return bRead;
}
