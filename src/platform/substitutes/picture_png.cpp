#include <png.h>

#include "platform/substitutes/picture.h"

namespace {

// Composes the colours on black and clears the fourth byte.
void ComposeOnBlack(BYTE* pPixels, size_t nPixels) {
    for (size_t i = 0; i < nPixels; ++i, pPixels += 4) {
        const unsigned nAlpha = pPixels[3];
        for (int c = 0; c < 3; ++c) pPixels[c] = static_cast<BYTE>((pPixels[c] * nAlpha + 127) / 255);
        pPixels[3] = 0;
    }
}

// Reads into rows stored bottom up.
bool ReadPixels(png_image* pImage, ByteBlock* pBmp) {
    const bool bAlpha = (pImage->format & PNG_FORMAT_FLAG_ALPHA) != 0;
    const BmpRows rows = StartBmp(pImage->width, pImage->height, bAlpha ? 32 : 24, pBmp);
    if (!rows.pBottom) return false;
    pImage->format = bAlpha ? PNG_FORMAT_BGRA : PNG_FORMAT_BGR;
    pImage->flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // when the file does not say, as for 8 bits
    if (!png_image_finish_read(pImage, nullptr, rows.pBottom, -static_cast<png_int_32>(rows.nStride),
                               nullptr))
        return false;
    if (bAlpha) ComposeOnBlack(rows.pBottom, size_t{pImage->width} * pImage->height);
    return true;
}

}  // namespace

bool PngToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    const bool bRead =
        png_image_begin_read_from_memory(&image, pFile, nBytes) != 0 && ReadPixels(&image, pBmp);
    png_image_free(&image);
    return bRead;
}
