// Sound files of several formats, by libsndfile.
#pragma once

#include <sndfile.h>

#include <memory>
#include <string>

#include "common/output.h"
#include "common/output_rules.h"
#include "render/options.h"

namespace render {

// By the suffix of a name: .wav, .flac or .ogg. False for any other.
bool AudioKind(const std::string& name, tools::FileKind* kind);

// Stereo at 44,100 Hz. Operations return false when they fail; error() then says why, with the name.
class AudioFile {
public:
    bool Open(const std::string& name, const AudioQuality& quality);
    void SetTags(const std::string& title, const std::string& artist);  // UTF-8; before the first Write
    bool Write(const float* samples, int64_t frames);                   // interleaved; full scale is 1
    bool Commit();
    const std::string& error() const { return error_; }

private:
    // What the library writes to: it does not tell of writes that fail while it closes.
    struct Medium {
        ~Medium();
        int fd = -1;
        sf_count_t place = 0;
        int error = 0;  // errno of the first failure
        static SF_VIRTUAL_IO Calls();
    };
    bool Fail(const std::string& why);
    int64_t WriteBlock(const float* samples, int64_t frames);

    std::string name_, error_, tags_;
    tools::Output out_;
    AudioQuality quality_;
    bool lossy_ = false;
    Medium medium_;
    std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file_{nullptr, sf_close};
};

}  // namespace render
