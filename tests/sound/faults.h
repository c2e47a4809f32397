// Makes the RIFF, codec and XA calls of the sound code fail, and counts them. The linker leads these calls
// here first (--wrap), so that nothing of this is in the program itself.
#pragma once

#include <cstdint>
#include <string>

namespace faults {

enum class Call {
    kMmioDescend,
    kMmioAscend,
    kMmioRead,
    kAcmFormatSuggest,
    kAcmStreamOpen,
    kAcmStreamSize,
    kAcmPrepare,
    kAcmConvert,
    kAcmUnprepare,
    kXaOpen,
    kXaSize,
    kXaConvert,
    kFileRead,
    kCount
};

// After `skip` more calls that go their way, the next `times` calls give `result` and do nothing.
void FailNext(Call call, int64_t result, int skip = 0, int times = 1);
void FailNothing();
int Calls(Call call);  // since FailNothing

// Flags of each acmStreamConvert since FailNothing, as text: 'B' with ACM_STREAMCONVERTF_BLOCKALIGN, '0'
// without any.
const std::string& ConvertFlags();

// The next Lock of a range hands out the first half of it alone.
void HalveNextLock();

// From now on xaDecodeOpen leaves nAvgBytesPerSec at 0.
void LeaveXaRateOpen();

}  // namespace faults
