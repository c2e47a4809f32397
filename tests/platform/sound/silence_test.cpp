// Memory for samples, and what silence costs of it.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstring>
#include <fstream>
#include <vector>

#include "platform/sound/memory.h"
#include "platform/sound/sound_fixture.h"

namespace {

TEST(SampleMemory, FreedNeighboursBecomeOneBlock) {
    constexpr size_t kUnit = size_t{512} << 10;  // four fill the first mapping
    for (const std::vector<size_t>& order : {std::vector<size_t>{0, 1}, {1, 0}, {0, 2, 1}}) {
        std::vector<audio::SampleBlock> blocks;
        for (int i = 0; i < 4; ++i) blocks.push_back(audio::AllocateSamples(kUnit));
        for (const size_t i : order) audio::FreeSamples(blocks[i]);
        const audio::SampleBlock merged = audio::AllocateSamples(order.size() * kUnit);
        // A mapping of its own for each block, as under a sanitizer, has nothing to merge.
        EXPECT_TRUE(merged.data == blocks[0].data || blocks[1].data != blocks[0].data + kUnit);
        audio::FreeSamples(merged);
        for (size_t i = order.size(); i < 4; ++i) audio::FreeSamples(blocks[i]);
    }
}

int64_t ResidentPages() {
    int64_t mapped = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> mapped >> resident;
    return resident;
}

TEST_F(SoundTest, SilenceTakesNoMemoryAndIsNotRead) {
    constexpr size_t kSounding = 3000, kNotRead = 16384, kPage = 4096;  // bytes
    const audio::SampleBlock fresh = audio::AllocateSamples(size_t{32} << 20);
    const bool maps = fresh.zeroed;  // not under a sanitizer
    audio::FreeSamples(fresh);
    const WAVEFORMATEX formats[] = {Pcm(1, 44100, 8), Pcm(1, 22050, 8), Pcm(1, 44100, 16), Pcm(1, 22050, 16)};
    for (const WAVEFORMATEX& format : formats) {
        const unsigned char silence = format.wBitsPerSample == 8 ? 0x80 : 0;
        const int64_t before = ResidentPages();
        IDirectSoundBuffer* buffer = Make(format, 200 << 20);
        EXPECT_FALSE(HasSoundAhead(*buffer));
        void* part = nullptr;
        DWORD size = 0;
        ASSERT_EQ(buffer->Lock(0, 0, &part, &size, nullptr, nullptr, DSBLOCK_ENTIREBUFFER), DS_OK);
        auto* samples = static_cast<unsigned char*>(part);
        std::memset(samples, 100, kSounding);
        audio::FillSamples(samples + kSounding, size - kSounding, silence);
        buffer->Unlock(part, size, nullptr, 0);
        EXPECT_TRUE(ResidentPages() - before < 1000 || !maps);
        auto* hidden = samples + kNotRead + kPage - reinterpret_cast<size_t>(samples + kNotRead) % kPage;
        const size_t bytes = (size_t{100} << 20);
        ASSERT_EQ(mprotect(hidden, bytes, PROT_NONE), 0);
        buffer->Play(0, 0, 0);
        EXPECT_TRUE(HasSoundAhead(*buffer));
        Wait(2'000'000);
        mprotect(hidden, bytes, PROT_READ | PROT_WRITE);
        EXPECT_EQ(Status(buffer), DSBSTATUS_PLAYING);
        EXPECT_EQ(Position(buffer), 2 * format.nAvgBytesPerSec);
        EXPECT_FALSE(HasSoundAhead(*buffer));
        EXPECT_EQ(samples[kSounding - 1] + samples[kSounding] + hidden[1], 100 + 2 * silence);
        // What is written ahead is heard, from the moment of the lock on.
        ASSERT_EQ(buffer->Lock(size - 8, 4, &part, &size, nullptr, nullptr, 0), DS_OK);
        EXPECT_TRUE(HasSoundAhead(*buffer));
        std::memset(part, 100, size);
        buffer->Unlock(part, size, nullptr, 0);
        EXPECT_TRUE(HasSoundAhead(*buffer));
        buffer->Stop();
        EXPECT_FALSE(HasSoundAhead(*buffer));
    }
}

}  // namespace
