#include "xa/read_sound.h"

#include <sndfile.h>

#include <memory>

#include "xa/encoder.h"

namespace xa {
namespace {

using File = std::unique_ptr<SNDFILE, decltype(&sf_close)>;

bool Fail(std::string* why, const char* what) {
    *why = what;
    return false;
}

}  // namespace

bool ReadSound(const std::string& path, Sound* sound, std::string* why) {
    SF_INFO info = {};
    File file(sf_open(path.c_str(), SFM_READ, &info), &sf_close);
    if (!file) return Fail(why, sf_strerror(nullptr));
    sf_command(file.get(), SFC_SET_SCALE_FLOAT_INT_READ, nullptr, SF_TRUE);
    sf_command(file.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    sound->channels = info.channels;
    sound->rate = info.samplerate < 0 ? 0 : static_cast<uint32_t>(info.samplerate);
    const char* refusal = Refusal(sound->channels, sound->rate, 0);
    if (refusal) return Fail(why, refusal);
    std::vector<int16_t> chunk(65536 * static_cast<size_t>(info.channels));
    sf_count_t got = 0;
    while ((got = sf_readf_short(file.get(), chunk.data(), 65536)) > 0) {
        sound->samples.insert(sound->samples.end(), chunk.begin(), chunk.begin() + got * info.channels);
        uint64_t frames = sound->samples.size() / static_cast<size_t>(info.channels);
        if ((refusal = Refusal(sound->channels, sound->rate, frames))) return Fail(why, refusal);
    }
    return sf_error(file.get()) == SF_ERR_NO_ERROR ? true : Fail(why, sf_strerror(file.get()));
}

}  // namespace xa
