#include "platform/codec_library.h"

#include "platform/library.h"

namespace {

struct Loaded {
    CodecLibrary calls;
    bool bComplete;
};

Loaded Load() {
    Loaded loaded;
    Library library("libsndfile.so.1");
    loaded.bComplete = library.Find("sf_open_virtual", &loaded.calls.OpenVirtual) &&
                       library.Find("sf_close", &loaded.calls.Close) &&
                       library.Find("sf_readf_short", &loaded.calls.ReadShorts) &&
                       library.Find("sf_readf_float", &loaded.calls.ReadFloats);
    return loaded;
}

}  // namespace

const CodecLibrary* LoadCodecLibrary() {
    static const Loaded loaded = Load();
    return loaded.bComplete ? &loaded.calls : nullptr;
}
