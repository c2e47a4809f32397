// The library that decodes sounds, loaded when the first sound needs it. It brings many codecs, which would
// slow every start, and a chart with plain PCM sounds never needs it.
#pragma once

#include <sndfile.h>

struct CodecLibrary {
    decltype(&sf_open_virtual) OpenVirtual = nullptr;
    decltype(&sf_close) Close = nullptr;
    decltype(&sf_readf_short) ReadShorts = nullptr;
    decltype(&sf_readf_float) ReadFloats = nullptr;
};

// Null when the library is not installed; compressed sounds then cannot be decoded. Thread-safe.
const CodecLibrary* LoadCodecLibrary();
