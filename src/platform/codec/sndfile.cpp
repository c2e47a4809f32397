#include "platform/codec/sndfile.h"

#include "platform/library.h"

static bool FindCodecLibrary(Library* pLibrary, CodecLibrary* pCalls) {
    return pLibrary->Find("sf_open_virtual", &pCalls->OpenVirtual) &&
           pLibrary->Find("sf_close", &pCalls->Close) &&
           pLibrary->Find("sf_readf_short", &pCalls->ReadShorts) &&
           pLibrary->Find("sf_readf_float", &pCalls->ReadFloats);
}

const CodecLibrary* LoadCodecLibrary() {
    return LoadLibraryCalls("libsndfile.so.1", FindCodecLibrary);
}
