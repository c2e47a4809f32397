// The memory of sound buffers: bounded, and silent when it is handed out.
#include "platform/sound/memory.h"

#include "platform/sound/sound_fixture.h"

namespace {

TEST(SampleMemory, IsBounded) {
    std::vector<audio::SampleBlock> blocks;
    do {
        blocks.push_back(audio::AllocateSamples(0x0FFFFFFC));
    } while (blocks.back().data != nullptr && blocks.size() < 20);
    EXPECT_LE(blocks.size(), 9u);
    for (const audio::SampleBlock& block : blocks) audio::FreeSamples(block);
}

TEST_F(SoundTest, NewBuffersAreSilentWhereOthersHaveBeen) {
    Make(Pcm(2, 44100, 16), 1000);  // otherwise the memory goes back to the system
    for (int round = 0; round < 2; ++round) {
        for (const int bits : {8, 16}) {
            IDirectSoundBuffer* buffer = Make(Pcm(1, 44100, bits), 100000);
            EXPECT_EQ(Contents(buffer), std::string(100000, bits == 8 ? '\x80' : '\0'));
            Write(buffer, 0, std::vector<char>(100000, '\x55'));
            buffer->Release();
            m_buffers.pop_back();
        }
    }
}

}  // namespace
