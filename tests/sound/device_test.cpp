// The device: start-up step by step, the silent buffer, the slots, the end.
#include "sound/dsound.h"

#include "sound/sound_support.h"

namespace {

using test::Call;

class Device : public SoundTest {
protected:
    void SetUp() override {  // without a device
        headless::Reset();
        test::ForgetCalls();
    }
};

TEST_F(Device, IsEmptyAtFirst) {
    CDSound device;
    EXPECT_EQ(device.m_pDS, nullptr);
    EXPECT_EQ(device.m_pPrimary, nullptr);
    EXPECT_EQ(device.m_pSilent, nullptr);
    EXPECT_EQ(device.m_pSilentCreated, nullptr);
    EXPECT_EQ(device.m_wfxPrimary.nChannels, 0);
    for (CDSBuffer* slot : device.m_pSlot) EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(device.PlaySilentBuffer(), 1);
    EXPECT_EQ(device.StopSilentBuffer(), 1);
    EXPECT_EQ(device.Compact(), 1);
    EXPECT_EQ(device.CreateSilentBuffer(2), 1);
    EXPECT_EQ(device.Term(), 0);
    EXPECT_EQ(headless::Log(), "");
}

TEST_F(Device, FormatSilenceAndOperations) {
    const struct {
        int quality;
        WAVEFORMATEX wfx;
        size_t bytes;
        char silence;
    } rows[] = {
        {1, {1, 2, 44100, 176400, 4, 16, 0}, 352800, '\0'},
        {7, {1, 2, 44100, 176400, 4, 16, 0}, 352800, '\0'},
        {0, {1, 1, 22050, 22050, 1, 8, 0}, 44100, '\x80'},
    };
    for (const auto& row : rows) {
        CDSound device;
        ASSERT_EQ(device.Init(nullptr, row.quality), 0);
        EXPECT_EQ(device.m_bHighQuality, row.quality);
        EXPECT_EQ(std::memcmp(&device.m_wfxPrimary, &row.wfx, sizeof(row.wfx)), 0);
        EXPECT_EQ(device.m_pSilent, device.m_pSilentCreated);
        EXPECT_EQ(Contents(device.m_pSilent), std::string(row.bytes, row.silence));
        headless::AdvanceClock(5'000'000'000);
        EXPECT_EQ(Status(device.m_pSilent), DSBSTATUS_PLAYING | DSBSTATUS_LOOPING);
        EXPECT_EQ(device.Compact(), 0);
        EXPECT_EQ(device.StopSilentBuffer(), 0);
        EXPECT_EQ(Status(device.m_pSilent), 0u);
        EXPECT_EQ(device.PlaySilentBuffer(), 0);
        test::Order(Call::kPlay, DSERR_BUFFERLOST);
        EXPECT_EQ(device.PlaySilentBuffer(), 1);
        test::Order(Call::kStop, DSERR_INVALIDCALL);
        EXPECT_EQ(device.StopSilentBuffer(), 1);
        test::Order(Call::kCompact, DSERR_PRIOLEVELNEEDED);
        EXPECT_EQ(device.Compact(), 1);
    }
    EXPECT_EQ(headless::Log(), "");
}

TEST_F(Device, InitFailures) {
    const char* const kCreate = "HRESULT->DSERR_OUTOFMEMORY\nCDSound::CreateSilentBuffer CreateDSBError\n";
    const struct {
        Call call;
        int skip;
        int result;
        const char* log;
        bool device, primary, silent;
    } rows[] = {
        {Call::kDirectSoundCreate, 0, 1, "", false, false, false},
        {Call::kSoundLevel, 0, 2, "", true, false, false},
        {Call::kCreateSoundBuffer, 0, 3, "", true, false, false},
        {Call::kSetFormat, 0, 4, "", true, true, false},
        {Call::kCreateSoundBuffer, 1, 5, kCreate, true, true, false},
        {Call::kLock, 0, 5, "CDSound::CreateSilentBuffer LockError\n", true, true, true},
        {Call::kUnlock, 0, 5, "CDSound::CreateSilentBuffer UnlockError\n", true, true, true},
        {Call::kPlay, 0, 6, "", true, true, true},
    };
    for (const auto& row : rows) {
        headless::Reset();
        test::ForgetCalls();
        CDSound device;
        test::Order(row.call, DSERR_OUTOFMEMORY, row.skip);
        EXPECT_EQ(device.Init(nullptr, 1), row.result);
        EXPECT_EQ(headless::Log(), row.log);
        EXPECT_EQ(device.m_pDS != nullptr, row.device) << row.result;
        EXPECT_EQ(device.m_pPrimary != nullptr, row.primary) << row.result;
        EXPECT_EQ(device.m_pSilent != nullptr, row.silent) << row.result;
        EXPECT_EQ(device.Term(), 0);
        EXPECT_EQ(device.m_pDS, nullptr);
        EXPECT_EQ(device.m_pPrimary, nullptr);
        EXPECT_EQ(device.m_pSilent, nullptr);
        EXPECT_EQ(device.m_pSilentCreated, nullptr);
        EXPECT_EQ(device.Term(), 0);
    }
}

TEST_F(Device, SilentBufferIsReplaced) {
    CDSound device;
    ASSERT_EQ(device.Init(nullptr, 1), 0);
    const int live = test::LiveBuffers();
    EXPECT_EQ(device.CreateSilentBuffer(3), 0);
    EXPECT_EQ(test::LiveBuffers(), live);
    EXPECT_EQ(Contents(device.m_pSilent).size(), 529200u);
    test::Order(Call::kCreateSoundBuffer, DSERR_BADFORMAT);
    EXPECT_EQ(device.CreateSilentBuffer(2), 1);
    EXPECT_EQ(headless::Log(), "HRESULT->DSERR_BADFORMAT\nCDSound::CreateSilentBuffer CreateDSBError\n");
    EXPECT_EQ(device.m_pSilent, nullptr);
    EXPECT_EQ(device.m_pSilentCreated, nullptr);
}

TEST_F(Device, TermDestroysTheSounds) {
    CDSound device;
    ASSERT_EQ(device.Init(nullptr, 1), 0);
    const int live = test::LiveBuffers();
    test::TempFolder folder;
    const std::string path = folder.Write("a.wav", test::SquareWav(4410));
    for (int slot : {0, 1, 575}) {
        device.m_pSlot[slot] = new CDSBuffer(device.m_pDS);
        device.m_pSlot[slot]->SetFileName(path.c_str());
        EXPECT_EQ(device.m_pSlot[slot]->Load(0), 0);
        EXPECT_EQ(device.m_pSlot[slot]->Play(), 0);
    }
    EXPECT_EQ(test::LiveBuffers(), live + 3);  // each slot has a copy of its own
    EXPECT_EQ(device.Term(), 0);
    for (CDSBuffer* slot : device.m_pSlot) EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(test::LiveBuffers(), 0);
}

}  // namespace
