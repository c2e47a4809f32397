// Each call's promises: what it refuses and with which code, and what it leaves in its out-parameters.
#include <sys/mman.h>

#include <fstream>
#include <functional>
#include <string>

#include "platform/sound/memory.h"
#include "sound_platform/sound_fixture.h"

namespace {

const WAVEFORMATEX kStereo = Pcm(2, 44100, 16);

TEST_F(SoundTest, DeviceIsRefusedForUnknownOnes) {
    int guid = 0, outer = 0;
    IDirectSound* device = m_device;
    EXPECT_EQ(DirectSoundCreate(&guid, &device, nullptr), DSERR_NODRIVER);
    EXPECT_EQ(device, nullptr);
    device = m_device;
    EXPECT_EQ(DirectSoundCreate(nullptr, &device, &outer), DSERR_NOAGGREGATION);
    EXPECT_EQ(device, nullptr);
    EXPECT_EQ(DirectSoundCreate(nullptr, nullptr, nullptr), DSERR_INVALIDPARAM);
    EXPECT_EQ(m_device->SetCooperativeLevel(nullptr, 3), DSERR_INVALIDPARAM);
}

TEST_F(SoundTest, NoOutputNoDevice) {
    EXPECT_EQ(m_device->Release(), 0u);
    m_device = nullptr;
    EXPECT_FALSE(headless::SoundIsOpen());
    headless::RefuseSound(true);
    IDirectSound* device = nullptr;
    EXPECT_EQ(DirectSoundCreate(nullptr, &device, nullptr), DSERR_NODRIVER);
    EXPECT_EQ(device, nullptr);
}

TEST_F(SoundTest, DescriptionsOfBuffers) {
    const struct {
        const char* name;
        std::function<void(DSBUFFERDESC&, WAVEFORMATEX&)> change;
        HRESULT result;
    } rows[] = {
        {"as the program makes them", [](auto&, auto&) {}, DS_OK},
        {"second attempt", [](auto& d, auto&) { d.dwFlags = 0x10080; }, DS_OK},
        {"size", [](auto& d, auto&) { d.dwSize = 36; }, DSERR_INVALIDPARAM},
        {"reserved", [](auto& d, auto&) { d.dwReserved = 1; }, DSERR_INVALIDPARAM},
        {"unknown flag", [](auto& d, auto&) { d.dwFlags |= 0x20; }, DSERR_INVALIDPARAM},
        {"no format", [](auto& d, auto&) { d.lpwfxFormat = nullptr; }, DSERR_INVALIDPARAM},
        {"too small", [](auto& d, auto&) { d.dwBufferBytes = 3; }, DSERR_BUFFERTOOSMALL},
        {"empty", [](auto& d, auto&) { d.dwBufferBytes = 0; }, DSERR_BUFFERTOOSMALL},
        {"too large", [](auto& d, auto&) { d.dwBufferBytes = DSBSIZE_MAX + 1; }, DSERR_INVALIDPARAM},
        {"far too large", [](auto& d, auto&) { d.dwBufferBytes = 0xFFFFFFFF; }, DSERR_INVALIDPARAM},
        {"no PCM", [](auto&, auto& f) { f.wFormatTag = WAVE_FORMAT_ADPCM; }, DSERR_BADFORMAT},
        {"float of 16 bits", [](auto&, auto& f) { f.wFormatTag = WAVE_FORMAT_IEEE_FLOAT; }, DSERR_BADFORMAT},
        {"no channels", [](auto&, auto& f) { f = Pcm(0, 44100, 16); }, DSERR_BADFORMAT},
        {"nine channels", [](auto&, auto& f) { f = Pcm(9, 44100, 16); }, DSERR_BADFORMAT},
        {"eight channels", [](auto&, auto& f) { f = Pcm(8, 44100, 16); }, DS_OK},
        {"12 bits", [](auto&, auto& f) { f.wBitsPerSample = 12; }, DSERR_BADFORMAT},
        {"0 bits", [](auto&, auto& f) { f = Pcm(2, 44100, 0); }, DSERR_BADFORMAT},
        {"64 bits", [](auto&, auto& f) { f = Pcm(2, 44100, 64); }, DSERR_BADFORMAT},
        {"24 bits", [](auto&, auto& f) { f = Pcm(2, 44100, 24); }, DS_OK},
        {"float", [](auto&, auto& f) { f = Pcm(1, 44100, 32, WAVE_FORMAT_IEEE_FLOAT); }, DS_OK},
        {"block align", [](auto&, auto& f) { f.nBlockAlign = 2; }, DSERR_BADFORMAT},
        {"no block align", [](auto&, auto& f) { f.nBlockAlign = 0; }, DSERR_BADFORMAT},
        {"no rate", [](auto&, auto& f) { f = Pcm(2, 0, 16); }, DSERR_BADFORMAT},
        {"200 kHz", [](auto&, auto& f) { f = Pcm(2, 200000, 16); }, DS_OK},
        {"above 200 kHz", [](auto&, auto& f) { f = Pcm(2, 200001, 16); }, DSERR_BADFORMAT},
        {"4 GHz", [](auto&, auto& f) { f.nSamplesPerSec = 0xFFFFFFFF; }, DSERR_BADFORMAT},
        {"primary with a size", [](auto& d, auto&) { d.dwFlags = DSBCAPS_PRIMARYBUFFER; },
         DSERR_INVALIDPARAM},
    };
    for (const auto& row : rows) {
        WAVEFORMATEX wfx = kStereo;
        DSBUFFERDESC desc = Describe(&wfx, 4000);
        row.change(desc, wfx);
        auto* buffer = reinterpret_cast<IDirectSoundBuffer*>(&desc);
        EXPECT_EQ(m_device->CreateSoundBuffer(&desc, &buffer, nullptr), row.result) << row.name;
        EXPECT_EQ(buffer == nullptr, row.result != DS_OK) << row.name;
        if (buffer != nullptr) buffer->Release();
    }
    const DSBUFFERDESC desc = Describe(&kStereo, 4000);
    IDirectSoundBuffer* buffer = nullptr;
    EXPECT_EQ(m_device->CreateSoundBuffer(&desc, nullptr, nullptr), DSERR_INVALIDPARAM);
    EXPECT_EQ(m_device->CreateSoundBuffer(nullptr, &buffer, nullptr), DSERR_INVALIDPARAM);
    EXPECT_EQ(m_device->CreateSoundBuffer(&desc, &buffer, &buffer), DSERR_NOAGGREGATION);
}

TEST(SampleMemory, IsBounded) {
    std::vector<audio::SampleBlock> blocks;
    do {
        blocks.push_back(audio::AllocateSamples(0x0FFFFFFC));
    } while (blocks.back().data != nullptr && blocks.size() < 20);
    EXPECT_LE(blocks.size(), 9u);
    for (const audio::SampleBlock& block : blocks) audio::FreeSamples(block);
}

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

TEST_F(SoundTest, CapsTellTheSizeInWholeFrames) {
    DSBCAPS caps = {};
    IDirectSoundBuffer* buffer = Make(Pcm(2, 44100, 24), 100);
    EXPECT_EQ(buffer->GetCaps(&caps), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->GetCaps(nullptr), DSERR_INVALIDPARAM);
    caps.dwSize = sizeof caps;
    ASSERT_EQ(buffer->GetCaps(&caps), DS_OK);
    EXPECT_EQ(caps.dwBufferBytes, 102u);
    EXPECT_EQ(caps.dwFlags, kSoundFlags);
}

TEST_F(SoundTest, LockGivesOnePartOrTwo) {
    IDirectSoundBuffer* buffer = Make(kStereo, 1000);
    const struct {
        DWORD offset, bytes, flags;
        HRESULT result;
        DWORD part1_at, part1, part2;
    } rows[] = {
        {0, 1000, 0, DS_OK, 0, 1000, 0},
        {0, 1, DSBLOCK_ENTIREBUFFER, DS_OK, 0, 1000, 0},
        {400, 0, DSBLOCK_ENTIREBUFFER, DS_OK, 400, 600, 400},
        {250, 100, 0, DS_OK, 250, 100, 0},
        {900, 100, 0, DS_OK, 900, 100, 0},
        {900, 101, 0, DS_OK, 900, 100, 1},
        {900, 1000, 0, DS_OK, 900, 100, 900},
        {7, 100, DSBLOCK_FROMWRITECURSOR, DS_OK, 0, 100, 0},  // stopped: both cursors stand at 0
        {1000, 1, 0, DSERR_INVALIDPARAM, 0, 0, 0},
        {0xFFFFFFFF, 4, 0, DSERR_INVALIDPARAM, 0, 0, 0},
        {0, 0, 0, DSERR_INVALIDPARAM, 0, 0, 0},
        {0, 1001, 0, DSERR_INVALIDPARAM, 0, 0, 0},
        {0, 0xFFFFFFFF, 0, DSERR_INVALIDPARAM, 0, 0, 0},
        {0, 4, 4, DSERR_INVALIDPARAM, 0, 0, 0},
    };
    void* base = nullptr;
    DWORD size = 0;
    ASSERT_EQ(buffer->Lock(0, 0, &base, &size, nullptr, nullptr, DSBLOCK_ENTIREBUFFER), DS_OK);
    for (const auto& row : rows) {
        void *p1 = &size, *p2 = &size;
        DWORD n1 = 77, n2 = 77;
        ASSERT_EQ(buffer->Lock(row.offset, row.bytes, &p1, &n1, &p2, &n2, row.flags), row.result)
            << row.offset;
        EXPECT_EQ(n1, row.part1);
        EXPECT_EQ(n2, row.part2);
        EXPECT_EQ(p1, row.part1 > 0 ? static_cast<char*>(base) + row.part1_at : nullptr);
        EXPECT_EQ(p2, row.part2 > 0 ? base : nullptr);
        if (row.result == DS_OK) {
            EXPECT_EQ(buffer->Unlock(p1, n1, p2, n2), DS_OK);
        }
    }
    // Without a second part the first ends with the buffer.
    void* p1 = nullptr;
    DWORD n1 = 0;
    ASSERT_EQ(buffer->Lock(900, 500, &p1, &n1, nullptr, nullptr, 0), DS_OK);
    EXPECT_EQ(n1, 100u);
    EXPECT_EQ(buffer->Lock(0, 4, nullptr, &n1, nullptr, nullptr, 0), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->Lock(0, 4, &p1, nullptr, nullptr, nullptr, 0), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->Unlock(nullptr, 0, nullptr, 0), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->Unlock(&n1, 4, nullptr, 0), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->Unlock(base, 1001, nullptr, 0), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->Unlock(base, 4, nullptr, 4), DSERR_INVALIDPARAM);
}

TEST_F(SoundTest, PlayPositionAndVolumeRefuseWhatTheyCannotDo) {
    IDirectSoundBuffer* buffer = Make(kStereo, 1000);
    EXPECT_EQ(buffer->Play(1, 0, 0), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->Play(0, 1, 0), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->Play(0, 0, 2), DSERR_INVALIDPARAM);
    EXPECT_EQ(Status(buffer), 0u);
    EXPECT_EQ(buffer->SetCurrentPosition(1000), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->SetCurrentPosition(999), DS_OK);
    EXPECT_EQ(Position(buffer), 996u);
    EXPECT_EQ(buffer->SetVolume(1), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->SetVolume(-10001), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->GetStatus(nullptr), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->GetCurrentPosition(nullptr, nullptr), DSERR_INVALIDPARAM);
    EXPECT_EQ(buffer->SetFormat(&kStereo), DSERR_INVALIDCALL);

    EXPECT_EQ(Make(Describe(&kStereo, 1000, DSBCAPS_STATIC))->SetVolume(0), DSERR_CONTROLUNAVAIL);
}

TEST_F(SoundTest, APrimaryBufferTakesFormatsOnly) {
    IDirectSoundBuffer* primary = MakePrimary();
    const WAVEFORMATEX low = Pcm(1, 22050, 8), bad = Pcm(2, 0, 16), fast = Pcm(2, 192001, 16);
    const WAVEFORMATEX wide = Pcm(3, 44100, 16);
    EXPECT_EQ(primary->SetFormat(nullptr), DSERR_INVALIDPARAM);
    for (const WAVEFORMATEX* wfx : {&bad, &fast, &wide}) EXPECT_EQ(primary->SetFormat(wfx), DSERR_BADFORMAT);
    EXPECT_EQ(headless::SoundRate(), 44100);
    EXPECT_EQ(primary->SetFormat(&low), DS_OK);
    EXPECT_EQ(headless::SoundRate(), 22050);
    EXPECT_EQ(primary->SetFormat(&kStereo), DS_OK);
    EXPECT_EQ(headless::SoundRate(), 44100);
    headless::RefuseSound(true);
    EXPECT_EQ(primary->SetFormat(&low), DSERR_BADFORMAT);
    headless::RefuseSound(false);

    void* p = nullptr;
    DWORD n = 0;
    EXPECT_EQ(primary->Lock(0, 4, &p, &n, nullptr, nullptr, 0), DSERR_PRIOLEVELNEEDED);
    EXPECT_EQ(primary->Unlock(&n, 4, nullptr, 0), DSERR_PRIOLEVELNEEDED);
    EXPECT_EQ(primary->GetCurrentPosition(&n, nullptr), DSERR_PRIOLEVELNEEDED);
    EXPECT_EQ(primary->SetCurrentPosition(0), DSERR_INVALIDCALL);
    EXPECT_EQ(primary->SetVolume(0), DSERR_CONTROLUNAVAIL);
    EXPECT_EQ(primary->Play(0, 0, 0), DSERR_INVALIDPARAM);
    EXPECT_EQ(primary->Play(0, 0, DSBPLAY_LOOPING), DS_OK);
    EXPECT_EQ(primary->Stop(), DS_OK);
    EXPECT_EQ(Status(primary), DSBSTATUS_PLAYING | DSBSTATUS_LOOPING);
}

TEST_F(SoundTest, FormatAndCompactNeedPriority) {
    EXPECT_EQ(m_device->Compact(), DS_OK);
    ASSERT_EQ(m_device->SetCooperativeLevel(nullptr, DSSCL_NORMAL), DS_OK);
    EXPECT_EQ(MakePrimary()->SetFormat(&kStereo), DSERR_PRIOLEVELNEEDED);
    EXPECT_EQ(m_device->Compact(), DSERR_PRIOLEVELNEEDED);
}

TEST_F(SoundTest, NewBuffersAreSilentWhereOthersHaveBeen) {
    Make(kStereo, 1000);  // else the memory would be given back
    for (int round = 0; round < 2; ++round) {
        for (const int bits : {8, 16}) {
            const std::string silence(100000, bits == 8 ? '\x80' : '\0');
            IDirectSoundBuffer* buffer = Make(Pcm(1, 44100, bits), 100000);
            EXPECT_EQ(Contents(buffer), silence);
            Write(buffer, 0, std::vector<char>(100000, '\x55'));
            buffer->Release();
            m_buffers.pop_back();
        }
    }
}

TEST_F(SoundTest, ReferencesAreCounted) {
    IDirectSoundBuffer* buffer = Make(kStereo, 1000);
    EXPECT_EQ(buffer->AddRef(), 2u);
    EXPECT_EQ(test::LiveBuffers(), 1);
    EXPECT_EQ(buffer->Release(), 1u);
    EXPECT_EQ(m_device->AddRef(), 2u);
    EXPECT_EQ(m_device->Release(), 1u);
    EXPECT_TRUE(headless::SoundIsOpen());
}

// Nothing sounds without a device, and nothing breaks.
TEST_F(SoundTest, BuffersMayOutliveTheirDevice) {
    IDirectSoundBuffer* buffer = Make(kStereo, std::vector<int16_t>(20000, 1000));
    ASSERT_EQ(buffer->Play(0, 0, DSBPLAY_LOOPING), DS_OK);
    Wait(10000);
    EXPECT_EQ(m_device->Release(), 0u);
    m_device = nullptr;
    EXPECT_FALSE(headless::SoundIsOpen());
    EXPECT_EQ(Status(buffer), 0u);
    for (int i = 0; i < 10000; ++i) ASSERT_EQ(buffer->Play(0, 0, 0), DS_OK);
    EXPECT_EQ(buffer->Stop(), DS_OK);
    EXPECT_EQ(buffer->SetCurrentPosition(40), DS_OK);
    EXPECT_EQ(Position(buffer), 40u);
}

}  // namespace
