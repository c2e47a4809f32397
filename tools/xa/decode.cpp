#include "xa/decode.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "platform/bytes.h"
#include "sound/xadec.h"
#include "sound/xaformat.h"

namespace xa {
namespace {

using Handle = std::unique_ptr<void, decltype(&xaDecodeClose)>;

}  // namespace

bool ReadHeader(const std::vector<uint8_t>& file, Header* header, std::string* why) {
    if (file.size() < XA_HEADER_SIZE || std::memcmp(file.data(), XA_MAGIC, sizeof XA_MAGIC) != 0) {
        *why = "not an XA file";
        return false;
    }
    WAVEFORMATEX format = {};
    if (!Handle(xaDecodeOpen(file.data(), &format), &xaDecodeClose)) {
        *why = "an XA file of an unknown kind, or with a damaged header";
        return false;
    }
    header->data_bytes = ReadLe32(file.data() + XA_AT_DATA_BYTES);
    header->frames = ReadLe32(file.data() + XA_AT_FRAMES);
    header->bits = file[XA_AT_BITS];
    header->channels = format.nChannels;
    header->rate = format.nSamplesPerSec;
    return true;
}

bool Decode(const std::vector<uint8_t>& file, const Header& header, Sound* sound, std::string* why) {
    WAVEFORMATEX format = {};
    Handle handle(xaDecodeOpen(file.data(), &format), &xaDecodeClose);
    DWORD length = static_cast<DWORD>(std::min<uint64_t>(header.data_bytes, file.size() - XA_HEADER_SIZE));
    DWORD size = 0;
    if (!handle || !xaDecodeSize(handle.get(), length, &size)) {
        *why = "the sound is too long";
        return false;
    }
    std::vector<uint8_t> pcm(size);
    XaConvertBlock block = {file.data() + XA_HEADER_SIZE, length, 0, pcm.data(), size, 0};
    DWORD done = 0;
    // The second call, without source, returns what a file that ends inside a block holds of it.
    for (int call = 0; call < 2; ++call) {
        if (!xaDecodeConvert(handle.get(), &block)) {
            *why = "the data is damaged at byte " + std::to_string(XA_HEADER_SIZE + block.nSrcUsed);
            return false;
        }
        done += block.nDstUsed;
        block = {nullptr, 0, 0, pcm.data() + done, size - done, 0};
    }
    sound->channels = header.channels;
    sound->rate = header.rate;
    uint64_t frames = std::min<uint64_t>(header.frames, done / (2u * static_cast<unsigned>(header.channels)));
    sound->samples.resize(frames * static_cast<unsigned>(header.channels));
    if (!sound->samples.empty()) std::memcpy(sound->samples.data(), pcm.data(), sound->samples.size() * 2);
    return true;
}

}  // namespace xa
