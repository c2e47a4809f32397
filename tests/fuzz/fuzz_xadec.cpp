// Takes any bytes as an XA file. The last two bytes set how much source and output each call gets.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "sound/xadec.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < XA_HEADER_SIZE + 2) return 0;
    WAVEFORMATEX format = {};
    void* xa = xaDecodeOpen(data, &format);
    if (!xa) return 0;
    DWORD pcm = 0;
    xaDecodeSize(xa, static_cast<DWORD>(size - XA_HEADER_SIZE), &pcm);
    const size_t most_source = data[size - 1] + size_t{1}, room = data[size - 2];
    std::vector<uint8_t> out(room);
    int idle = 0;
    for (size_t at = XA_HEADER_SIZE; idle < 3;) {
        std::vector<uint8_t> source(data + at, data + std::min(size, at + most_source));
        XaConvertBlock block = {source.data(), static_cast<DWORD>(source.size()), 0,
                                out.data(),    static_cast<DWORD>(room),          0};
        if (!xaDecodeConvert(xa, &block)) break;
        if (block.nSrcUsed > source.size() || block.nDstUsed > room) __builtin_trap();
        at += block.nSrcUsed;
        idle = block.nSrcUsed == 0 && block.nDstUsed == 0 ? idle + 1 : 0;
    }
    xaDecodeClose(xa);
    return 0;
}
