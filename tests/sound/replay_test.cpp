// The stored inputs of the fuzz targets, through the same code as there.
#include "support/replay.h"
#include "../../fuzz/play_sound.h"
#include "host/headless/headless.h"
#include "support/calls.h"

namespace {

void Replay(const std::string& target, int least) {
    headless::Reset();
    CDSound device;
    ASSERT_EQ(device.Init(nullptr, 1), 0);
    test::Replay(FUZZ_INPUTS "/" + target, least, [&](const uint8_t* data, size_t size) {
        fuzz::PlaySound(device, data, size);
        EXPECT_EQ(test::LiveBuffers(), 2);  // the device's own
    });
}

TEST(StoredSounds, Wav) {
    Replay("fuzz_wav", 30);
}
TEST(StoredSounds, Xa) {
    Replay("fuzz_xa", 10);
}

}  // namespace
