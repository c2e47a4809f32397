// The library that decodes sounds, loaded when the first sound needs it: with the codecs behind it, it would
// make every start longer, and a chart of plain PCM sounds never needs it.
#pragma once

#include <sndfile.h>

struct CodecLibrary {
    decltype(&sf_open_virtual) OpenVirtual = nullptr;
    decltype(&sf_close) Close = nullptr;
    decltype(&sf_readf_short) ReadShorts = nullptr;
    decltype(&sf_readf_float) ReadFloats = nullptr;
};

// Null when the library is not installed: then no such sound can be decoded. From any thread.
const CodecLibrary* LoadCodecLibrary();
