#include "sound/faults.h"

#include "platform/codec/acm.h"
#include "platform/codec/mmio.h"
#include "platform/files/files.h"
#include "platform/sound/directsound.h"
#include "sound/xadec.h"

namespace {

struct Order {
    int64_t result = 0;
    int skip = 0;
    int times = 0;
};

Order g_orders[static_cast<int>(faults::Call::kCount)];
int g_calls[static_cast<int>(faults::Call::kCount)];
std::string g_flags;
bool g_leave_rate_open = false;
bool g_halve_lock = false;

bool Fails(faults::Call call, int64_t* result) {
    ++g_calls[static_cast<int>(call)];
    Order& order = g_orders[static_cast<int>(call)];
    if (order.times == 0) return false;
    if (order.skip > 0) {
        --order.skip;
        return false;
    }
    --order.times;
    *result = order.result;
    return true;
}

}  // namespace

namespace faults {

void FailNext(Call call, int64_t result, int skip, int times) {
    g_orders[static_cast<int>(call)] = {result, skip, times};
}

void FailNothing() {
    for (Order& order : g_orders) order = {};
    for (int& calls : g_calls) calls = 0;
    g_flags.clear();
    g_leave_rate_open = false;
    g_halve_lock = false;
}

int Calls(Call call) {
    return g_calls[static_cast<int>(call)];
}

const std::string& ConvertFlags() {
    return g_flags;
}

void HalveNextLock() {
    g_halve_lock = true;
}

void LeaveXaRateOpen() {
    g_leave_rate_open = true;
}

}  // namespace faults

// SYMBOL is FUNCTION's mangled name; the linker knows the true function as __real_ and calls it as __wrap_.
#define FAULT(FUNCTION, SYMBOL, CALL, RESULT, PARAMETERS, ARGUMENTS)     \
    extern "C" decltype(FUNCTION) __real_##SYMBOL, __wrap_##SYMBOL;      \
    extern "C" RESULT __wrap_##SYMBOL PARAMETERS {                       \
        int64_t result;                                                  \
        if (Fails(faults::Call::CALL, &result)) return (RESULT)(result); \
        return __real_##SYMBOL ARGUMENTS;                                \
    }

FAULT(mmioDescend, _Z11mmioDescendP8MmioFileP8MMCKINFOPKS1_j, kMmioDescend, MMRESULT,
      (HMMIO h, MMCKINFO* chunk, const MMCKINFO* parent, UINT flags), (h, chunk, parent, flags))
FAULT(mmioAscend, _Z10mmioAscendP8MmioFileP8MMCKINFOj, kMmioAscend, MMRESULT,
      (HMMIO h, MMCKINFO* chunk, UINT flags), (h, chunk, flags))
FAULT(mmioRead, _Z8mmioReadP8MmioFilePvi, kMmioRead, LONG, (HMMIO h, void* to, LONG count), (h, to, count))
FAULT(acmFormatSuggest, _Z16acmFormatSuggestP9AcmDriverP12WAVEFORMATEXS2_jj, kAcmFormatSuggest, MMRESULT,
      (AcmDriver * d, WAVEFORMATEX* from, WAVEFORMATEX* to, DWORD size, DWORD flags),
      (d, from, to, size, flags))
FAULT(acmStreamOpen, _Z13acmStreamOpenPP9AcmStreamP9AcmDriverP12WAVEFORMATEXS5_P10WAVEFILTERmmj,
      kAcmStreamOpen, MMRESULT,
      (HACMSTREAM * h, AcmDriver* d, WAVEFORMATEX* from, WAVEFORMATEX* to, WAVEFILTER* filter,
       uintptr_t callback, uintptr_t instance, DWORD flags),
      (h, d, from, to, filter, callback, instance, flags))
FAULT(acmStreamSize, _Z13acmStreamSizeP9AcmStreamjPjj, kAcmStreamSize, MMRESULT,
      (HACMSTREAM h, DWORD in, DWORD* out, DWORD flags), (h, in, out, flags))
FAULT(acmStreamPrepareHeader, _Z22acmStreamPrepareHeaderP9AcmStreamP15ACMSTREAMHEADERj, kAcmPrepare, MMRESULT,
      (HACMSTREAM h, ACMSTREAMHEADER* header, DWORD flags), (h, header, flags))
FAULT(acmStreamUnprepareHeader, _Z24acmStreamUnprepareHeaderP9AcmStreamP15ACMSTREAMHEADERj, kAcmUnprepare,
      MMRESULT, (HACMSTREAM h, ACMSTREAMHEADER* header, DWORD flags), (h, header, flags))
FAULT(xaDecodeSize, _Z12xaDecodeSizePvjPj, kXaSize, int, (void* h, DWORD length, DWORD* pcm),
      (h, length, pcm))
FAULT(xaDecodeConvert, _Z15xaDecodeConvertPvP14XaConvertBlock, kXaConvert, int,
      (void* h, XaConvertBlock* block), (h, block))
FAULT(FileRead, _Z8FileReadPvmmP10FileStream, kFileRead, size_t,
      (void* to, size_t size, size_t count, FileStream* file), (to, size, count, file))

// Those that do more than to fail.
extern "C" decltype(acmStreamConvert) __real__Z16acmStreamConvertP9AcmStreamP15ACMSTREAMHEADERj,
    __wrap__Z16acmStreamConvertP9AcmStreamP15ACMSTREAMHEADERj;
extern "C" MMRESULT __wrap__Z16acmStreamConvertP9AcmStreamP15ACMSTREAMHEADERj(HACMSTREAM h,
                                                                              ACMSTREAMHEADER* header,
                                                                              DWORD flags) {
    g_flags += flags == ACM_STREAMCONVERTF_BLOCKALIGN ? 'B' : flags == 0 ? '0' : '?';
    int64_t result;
    if (Fails(faults::Call::kAcmConvert, &result)) return static_cast<MMRESULT>(result);
    return __real__Z16acmStreamConvertP9AcmStreamP15ACMSTREAMHEADERj(h, header, flags);
}

extern "C" decltype(xaDecodeOpen) __real__Z12xaDecodeOpenPKhP12WAVEFORMATEX,
    __wrap__Z12xaDecodeOpenPKhP12WAVEFORMATEX;
extern "C" void* __wrap__Z12xaDecodeOpenPKhP12WAVEFORMATEX(const BYTE* header, WAVEFORMATEX* format) {
    int64_t result;
    if (Fails(faults::Call::kXaOpen, &result)) return nullptr;
    void* handle = __real__Z12xaDecodeOpenPKhP12WAVEFORMATEX(header, format);
    if (g_leave_rate_open) format->nAvgBytesPerSec = 0;
    return handle;
}

using LockCall = HRESULT(IDirectSoundBuffer*, DWORD, DWORD, void**, DWORD*, void**, DWORD*, DWORD);
extern "C" LockCall __real__ZN18IDirectSoundBuffer4LockEjjPPvPjS1_S2_j,
    __wrap__ZN18IDirectSoundBuffer4LockEjjPPvPjS1_S2_j;
extern "C" HRESULT __wrap__ZN18IDirectSoundBuffer4LockEjjPPvPjS1_S2_j(IDirectSoundBuffer* buffer,
                                                                      DWORD offset, DWORD bytes, void** part1,
                                                                      DWORD* bytes1, void** part2,
                                                                      DWORD* bytes2, DWORD flags) {
    const HRESULT result = __real__ZN18IDirectSoundBuffer4LockEjjPPvPjS1_S2_j(buffer, offset, bytes, part1,
                                                                              bytes1, part2, bytes2, flags);
    if (g_halve_lock && result == DS_OK && flags == 0) {
        g_halve_lock = false;
        *bytes1 /= 2;
        *part2 = nullptr;
        *bytes2 = 0;
    }
    return result;
}
