// The stored inputs of the fuzz targets, through the same code as there.
#include "support/replay.h"
#include "../../fuzz/play_sound.h"
#include "host/headless/headless.h"
#include "platform/sound/directsound_test.h"

namespace {

void Replay(const std::string& target, int least) {
    headless::Reset();
    CDSound device;
    ASSERT_EQ(device.Init(nullptr, 1), 0);
    test::Replay(FUZZ_INPUTS "/" + target, least, [&](const uint8_t* data, size_t size) {
        fuzz::PlaySound(device, data, size);
        EXPECT_LE(directsound_test::SampleBytes(), size_t{1} << 20);  // the silent buffer is left
    });
}

TEST(StoredSounds, Wav) {
    Replay("fuzz_wav", 30);
}
TEST(StoredSounds, Xa) {
    Replay("fuzz_xa", 10);
}

}  // namespace
