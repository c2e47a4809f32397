// The operations on a loaded sound.
#include "sound/sound_support.h"

namespace soundtest {
namespace {

class Play : public SoundTest {
protected:
    void SetUp() override {
        SoundTest::SetUp();
        m_samples = Music(44100, 1, 44100);
        ASSERT_EQ(Make(test::Wav(m_samples))->Load(0), 0);
    }

    static int Heard(int64_t frame) { return Heard16(frame, 0); }
    static int64_t Now() { return headless::SoundFrame(headless::Clock()); }
    // Between two steps of the clock a hundredth of a second passes: 441 frames.
    static void Wait(uint64_t hundredths) { ::SoundTest::Wait(hundredths * 10'000); }

    Samples m_samples;
};

TEST_F(Play, ConstructionState) {
    CDSBuffer a(m_device), b;
    EXPECT_EQ(a.m_pDS, m_device);
    EXPECT_EQ(b.m_pDS, nullptr);
    for (const CDSBuffer* sound : {&a, &b}) {
        EXPECT_EQ(sound->m_nStreamSeconds, 20u);
        EXPECT_EQ(sound->m_nFade, -1);
        EXPECT_EQ(sound->m_nFadeSteps, 5);
        EXPECT_EQ(sound->m_szName[0], '\0');
        EXPECT_EQ(sound->m_nKind, 0);
        EXPECT_EQ(Held(*sound), "");
        EXPECT_EQ(sound->m_bStream + sound->m_bLoop + sound->m_bWasPlaying + sound->m_nPlayParam, 0);
    }
    a.SetStreamSeconds(7);
    EXPECT_EQ(a.m_nStreamSeconds, 7u);
    EXPECT_EQ(m_sound->GetDSBuffer(), m_sound->m_pDSB);
    a.SetFileName(std::string(300, 'n').c_str());
    EXPECT_EQ(std::string(a.m_szName), std::string(259, 'n'));
}

TEST_F(Play, NothingLoaded) {
    CDSBuffer sound(m_device);
    sound.m_bWasPlaying = 1;
    EXPECT_EQ(sound.Play(), 1);
    EXPECT_EQ(sound.PlayCurrent(1, 2), 1);
    EXPECT_EQ(sound.m_nPlayParam, 0);
    EXPECT_EQ(sound.Stop(), 1);
    EXPECT_EQ(sound.Rewind(), 1);
    EXPECT_EQ(sound.IsPlaying(), 0);
    EXPECT_EQ(sound.Pause(), 1);
    EXPECT_EQ(sound.FadeStart(), 1);
    EXPECT_EQ(sound.m_nFade, -1);
    EXPECT_EQ(sound.FadeStep(), 0);
    sound.m_nFade = 3;
    EXPECT_EQ(sound.FadeStep(), 1);
    EXPECT_EQ(sound.m_nFade, 3);
    sound.Resume();
    EXPECT_EQ(sound.StreamPlay(), 0);
    EXPECT_EQ(sound.StreamUpdateResetWav(), 0);
    EXPECT_EQ(sound.StreamUpdateResetXA(), 0);
    EXPECT_EQ(headless::Log(), "");
}

TEST_F(Play, AtMostFourCalls) {
    const int before = test::Calls(), volumes = test::Calls(Call::kSetVolume);
    EXPECT_EQ(m_sound->Play(), 0);
    const int first = test::Calls();
    EXPECT_EQ(m_sound->Play(), 0);
    EXPECT_EQ(first - before, 3);  // status, cursor, play
    EXPECT_EQ(test::Calls() - first, 4);
    EXPECT_EQ(test::Calls(Call::kSetVolume), volumes);
}

TEST_F(Play, Failures) {
    const auto fails = [&](Call call, HRESULT result, auto action) {
        test::Order(call, result);
        const int given = action();
        test::ForgetCalls();
        return given;
    };
    CDSBuffer& s = *m_sound;
    EXPECT_EQ(fails(Call::kSetCurrentPosition, kFailed, [&] { return s.Play(); }), 1);
    EXPECT_EQ(fails(Call::kSetCurrentPosition, 1, [&] { return s.Play(); }), 0);  // no negative result
    EXPECT_EQ(fails(Call::kPlay, DSERR_BUFFERLOST, [&] { return s.Play(); }), 1);
    EXPECT_EQ(s.Play(), 0);
    EXPECT_EQ(fails(Call::kStop, kFailed, [&] { return s.Play(); }), 1);
    EXPECT_EQ(fails(Call::kStop, kFailed, [&] { return s.Rewind(); }), 1);
    EXPECT_EQ(fails(Call::kSetCurrentPosition, 1, [&] { return s.Rewind(); }), 1);
    EXPECT_EQ(s.Rewind(), 0);
    EXPECT_EQ(Position(s.m_pDSB), 0u);
    EXPECT_EQ(fails(Call::kSetVolume, kFailed, [&] { return s.PlayCurrent(1, 9); }), 1);
    EXPECT_EQ(s.m_bLoop, 1);
    EXPECT_EQ(s.m_nPlayParam, 9);
    EXPECT_EQ(fails(Call::kPlay, 1, [&] { return s.PlayCurrent(0, 0); }), 1);
    EXPECT_EQ(fails(Call::kStop, kFailed, [&] { return s.Stop(); }), 1);
    EXPECT_EQ(fails(Call::kStop, kFailed, [&] { return s.Pause(); }), 1);
    s.FadeStart();
    EXPECT_EQ(fails(Call::kSetVolume, kFailed, [&] { return s.FadeStep(); }), 1);
    EXPECT_EQ(s.m_nFade, 5);
    s.m_nFade = 0;
    EXPECT_EQ(fails(Call::kStop, kFailed, [&] { return s.FadeStep(); }), 1);
    EXPECT_EQ(s.m_nFade, -1);
    EXPECT_EQ(headless::Log(), "");
}

TEST_F(Play, PauseAndResume) {
    m_sound->Play();
    Wait(30);
    EXPECT_EQ(m_sound->Pause(), 0);
    EXPECT_EQ(m_sound->m_bWasPlaying, 1);
    EXPECT_EQ(m_sound->IsPlaying(), 0);
    m_sound->Resume();
    EXPECT_EQ(m_sound->m_bWasPlaying, 0);
    EXPECT_EQ(m_sound->m_bLoop, 0);
    EXPECT_EQ(m_sound->IsPlaying(), 1);
    Wait(120);

    const auto expect_no_restart = [&] {
        m_sound->Resume();
        EXPECT_EQ(m_sound->IsPlaying(), 0);
        EXPECT_EQ(m_sound->m_bWasPlaying, 0);
    };
    m_sound->Pause();  // it has ended
    EXPECT_EQ(m_sound->m_bWasPlaying, 0);
    expect_no_restart();

    m_sound->Play();
    m_sound->Pause();
    m_sound->Pause();
    EXPECT_EQ(m_sound->m_bWasPlaying, 0);
    expect_no_restart();

    m_sound->Play();
    m_sound->Pause();
    m_sound->Stop();
    m_sound->ClearPaused();
    expect_no_restart();

    m_sound->Play();
    m_sound->FadeStart();
    m_sound->Pause();
    expect_no_restart();
}

TEST_F(Play, OnlyOneLoops) {
    for (int loop : {0, 1, 2, -1}) {
        m_sound->Rewind();
        EXPECT_EQ(m_sound->PlayCurrent(loop, 0), 0);
        EXPECT_EQ(m_sound->m_bLoop, loop);
        Wait(150);
        EXPECT_EQ(m_sound->IsPlaying(), loop == 1 ? 1 : 0) << loop;
    }
    m_sound->PlayCurrent(1, 0);
    m_sound->Play();  // leaves m_bLoop alone
    EXPECT_EQ(m_sound->m_bLoop, 1);
    Wait(150);
    EXPECT_EQ(m_sound->IsPlaying(), 0);
}

TEST_F(Play, FadeTakesSixSteps) {
    const double gains[] = {1, 0.1, 0.01, 0.001, 0.0001, 0};
    m_sound->PlayCurrent(1, 0);
    const int volumes = test::Calls(Call::kSetVolume);
    EXPECT_EQ(m_sound->FadeStep(), 0);  // no fade runs
    EXPECT_EQ(test::Calls(Call::kSetVolume), volumes);
    EXPECT_EQ(m_sound->FadeStart(), 0);
    int64_t played = 0;
    for (int step = 0; step < 6; ++step) {
        EXPECT_EQ(m_sound->m_nFade, 5 - step);
        EXPECT_EQ(m_sound->IsPlaying(), 1);
        EXPECT_EQ(m_sound->FadeStep(), 0);
        const int64_t from = Now();
        Wait(1);
        for (int64_t i = 0; step < 5 && i < 441; ++i)
            ASSERT_NEAR(headless::Sound().At(from + i, 0),
                        m_samples[static_cast<size_t>(played + i)] / 32768.0 * gains[step], 1e-6);
        played += 441;
    }
    EXPECT_EQ(m_sound->m_nFade, -1);
    EXPECT_EQ(m_sound->IsPlaying(), 0);
    EXPECT_EQ(m_sound->FadeStep(), 0);

    m_sound->Play();  // sets no volume: still silent
    int64_t from = Now();
    Wait(2);
    EXPECT_EQ(Heard(from + 100), 0);
    m_sound->Rewind();
    m_sound->PlayCurrent(0, 0);
    from = Now();
    Wait(2);
    EXPECT_EQ(Heard(from + 100), m_samples[100]);
}

}  // namespace
}  // namespace soundtest
