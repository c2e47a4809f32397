// Takes any bytes as a substitute picture. If it converts, the result is a displayable BMP.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/substitutes/picture.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ByteBlock bmp;
    const uint64_t work = PictureWork(data, size);
    if (!PictureToBmp(data, size, &bmp)) return 0;
    if (work == 0) std::abort();  // what is decoded counts
    int32_t width, height;
    uint16_t bits;
    std::memcpy(&width, bmp.Data() + 18, 4);
    std::memcpy(&height, bmp.Data() + 22, 4);
    std::memcpy(&bits, bmp.Data() + 28, 2);
    if (width < 1 || width > kMaxPictureSide || height < 1 || height > kMaxPictureSide) std::abort();
    const size_t stride = (static_cast<size_t>(width) * bits / 8 + 3) / 4 * 4;
    if (bmp.Size() != 54 + stride * static_cast<size_t>(height)) std::abort();
    // Sums all bytes, to prove that each has been written; the compiler cannot drop it.
    unsigned sum = 0;
    for (size_t i = 0; i < bmp.Size(); ++i) sum += bmp.Data()[i];
    return sum == 1 ? std::abort(), 0 : 0;
}
