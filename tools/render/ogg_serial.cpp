#include "render/ogg_serial.h"

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <numeric>

namespace render {
namespace {

constexpr size_t kSerial = 14, kChecksum = 22, kSegments = 26, kHeader = 27;  // offsets in a page
constexpr size_t kMostOfPage = kHeader + 255 + 255 * 255;

constexpr auto kTable = [] {
    std::array<uint32_t, 256> table = {};
    for (uint32_t i = 0; i < table.size(); ++i) {
        uint32_t value = i << 24;
        for (int bit = 0; bit < 8; ++bit) value = value << 1 ^ (value >> 31 ? 0x04C11DB7u : 0);
        table[i] = value;
    }
    return table;
}();

uint32_t Checksum(const char* bytes, size_t count) {
    uint32_t sum = 0;
    for (size_t i = 0; i < count; ++i) sum = sum << 8 ^ kTable[sum >> 24 ^ static_cast<uint8_t>(bytes[i])];
    return sum;
}

void Put(uint32_t value, char* at) {
    for (int i = 0; i < 4; ++i) at[i] = static_cast<char>(value >> 8 * i);
}

// 0 when no whole page begins there.
size_t SizeOfPage(const char* page, size_t count) {
    if (count < kHeader || std::memcmp(page, "OggS", 4) != 0) return 0;
    const auto* lengths = reinterpret_cast<const uint8_t*>(page) + kHeader;
    const size_t segments = lengths[-1], head = kHeader + segments;
    const size_t size = count < head ? SIZE_MAX : std::accumulate(lengths, lengths + segments, head);
    return size <= count ? size : 0;
}

}  // namespace

bool SetOggSerial(int fd, std::string_view seed) {
    char page[kMostOfPage];
    const uint32_t serial = Checksum(seed.data(), seed.size());
    for (off_t at = 0;;) {
        const ssize_t count = pread(fd, page, sizeof page, at);
        if (count <= 0) return count == 0;
        const size_t size = SizeOfPage(page, static_cast<size_t>(count));
        if (size == 0) return false;
        Put(serial, page + kSerial);
        Put(0, page + kChecksum);
        Put(Checksum(page, size), page + kChecksum);
        constexpr size_t kChanged = kSegments - kSerial;
        if (pwrite(fd, page + kSerial, kChanged, at + ssize_t{kSerial}) != ssize_t{kChanged}) return false;
        at += static_cast<off_t>(size);
    }
}

}  // namespace render
