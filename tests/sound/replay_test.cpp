// The stored inputs of the fuzz targets, through the same code as there.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "../../fuzz/play_sound.h"
#include "host/headless/headless.h"
#include "platform/directsound_test.h"

namespace {

size_t Replay(const char* target) {
    headless::Reset();
    CDSound device;
    EXPECT_EQ(device.Init(nullptr, 1), 0);
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(std::string(FUZZ_INPUTS "/") + target)) {
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), {});
        fuzz::PlaySound(device, reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        EXPECT_LE(directsound_test::SampleBytes(), size_t{1} << 20)
            << entry.path();  // the silent buffer is left
        ++count;
    }
    return count;
}

TEST(StoredSounds, Wav) {
    EXPECT_GE(Replay("fuzz_wav"), 30u);
}
TEST(StoredSounds, Xa) {
    EXPECT_GE(Replay("fuzz_xa"), 10u);
}

}  // namespace
