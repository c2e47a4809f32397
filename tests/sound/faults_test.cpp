// Every call of every operation fails once: what the log says, what the sound holds, and what can still be
// done.
#include <functional>

#include "sound/dsound.h"
#include "sound/sound_support.h"

namespace soundtest {
namespace {

// The calls of PlatformCall from its sound calls on.
const char kNames[] =
    "DirectSoundCreate SoundLevel CreateSoundBuffer Compact DirectSoundRelease GetCaps GetCurrentPosition "
    "GetStatus Lock Unlock Play Stop SetCurrentPosition SetVolume SetFormat Restore BufferRelease "
    "MmioDescend "
    "MmioAscend MmioRead AcmFormatSuggest AcmStreamOpen AcmStreamSize AcmPrepare AcmConvert AcmUnprepare "
    "XaOpen "
    "XaSize XaConvert FileOpen FileRead";

struct Fault {
    Call call;
    int64_t result;
    int skip, times;
};

// The ways in which a call is made to fail. Some callers take a failure only, others any result but success.
std::vector<Fault> FaultsOf(Call call, int skip) {
    if (call == Call::kDirectSoundRelease || call == Call::kBufferRelease) return {};
    if (call == Call::kLock) {
        return {
            {call, E_FAIL, skip, 1}, {call, DSERR_BUFFERLOST, skip, 1}, {call, DSERR_BUFFERLOST, skip, 2}};
    }
    if (call == Call::kMmioRead) return {{call, -1, skip, 1}};
    if (call >= Call::kXaOpen) return {{call, 0, skip, 1}};
    if (call >= Call::kMmioDescend) return {{call, 1, skip, 1}};
    if (call == Call::kDirectSoundCreate || call == Call::kCreateSoundBuffer)
        return {{call, E_FAIL, skip, 1}};
    return {{call, E_FAIL, skip, 1}, {call, 1, skip, 1}};
}

class Faults : public SoundTest {
protected:
    struct Operation {
        const char* name;
        std::function<void()> prepare;
        std::function<int()> act;
        std::function<std::string()> after;
    };

    std::string Result(const Operation& operation, const std::string& title) {
        int result = 0;
        const std::string log = LogOf([&] { result = operation.act(); });
        test::ForgetCalls();
        return title + " -> " + std::to_string(result) + operation.after() + InOneLine(log);
    }

    std::string Sweep(const Operation& operation) {
        operation.prepare();
        test::ForgetCalls();
        operation.act();
        std::vector<Fault> faults;
        for (auto call = Call::kDirectSoundCreate; call < Call::kCount;
             call = static_cast<Call>(static_cast<int>(call) + 1)) {
            for (int skip = 0; skip < test::Calls(call); ++skip) {
                const std::vector<Fault> more = FaultsOf(call, skip);
                faults.insert(faults.end(), more.begin(), more.end());
            }
        }
        std::string text = std::string("== ") + operation.name + "\n";
        for (const Fault& fault : faults) {
            operation.prepare();
            test::ForgetCalls();
            test::Order(fault.call, fault.result, fault.skip, fault.times);
            // Where memory is lost twice, it cannot be restored either.
            if (fault.times == 2) test::Order(Call::kRestore, E_FAIL);
            std::istringstream names(kNames);
            std::string name;
            for (int i = static_cast<int>(Call::kDirectSoundCreate); i <= static_cast<int>(fault.call); ++i)
                names >> name;
            std::ostringstream title;
            title << name << ' ' << fault.skip << " = " << std::hex << static_cast<uint32_t>(fault.result);
            text += Result(operation, title.str() + (fault.times == 2 ? " twice" : ""));
        }
        return text;
    }

    // What the sound holds, and that nothing is read any more without a file.
    std::string AfterSound() {
        CDSBuffer& s = *m_sound;
        std::string text =
            Held(s) + (s.m_pDSB && s.m_bStream == 0 ? " " + test::Hash(Contents(s.m_pDSB)) : "") +
            (s.m_nHalf != 0 ? "; second half" : "") + (s.IsPlaying() ? "; sounds" : "") +
            (s.m_nFade != -1 ? "; fade " + std::to_string(s.m_nFade) : "") + (s.Play() == 0 ? "; plays" : "");
        for (int i = 0; i < 2 && s.m_pDSB; ++i) Serve(&s);
        const bool reads = test::Calls(Call::kMmioRead) + test::Calls(Call::kFileRead) > 0;
        EXPECT_TRUE(!reads || s.m_hFile);
        EXPECT_EQ(LogOf([&] { s.Term(); }), "");
        EXPECT_EQ(Held(s), "");
        return text;
    }

    Operation OfSound(const char* name, const char* file, int stream, const std::function<void()>& prepare,
                      const std::function<int()>& act) {
        const auto make = [=, this] {
            Make(test::ReadFile(std::string(SOUND_DATA "/files/") + file));
            if (!prepare) return;
            EXPECT_EQ(m_sound->Load(stream), 0);
            prepare();
        };
        return {name, make, act, [this] { return AfterSound(); }};
    }
};

TEST_F(Faults, OfADevice) {
    std::unique_ptr<CDSound> device;
    const auto make = [&] { device = std::make_unique<CDSound>(); };
    const auto after = [&] {
        const CDSound& d = *device;
        return std::string(d.m_pDS ? " device" : "") + (d.m_pPrimary ? " primary" : "") +
               (d.m_pSilent ? " silent" : "") + (d.m_pSilentCreated ? " created" : "");
    };
    const auto init = [&] { return device->Init(nullptr, 1); };
    const auto made = [&] { make(), init(); };
    test::ExpectStored(
        Sweep({"Init", make, init, after}) +
            Sweep({"CreateSilentBuffer", made, [&] { return device->CreateSilentBuffer(3); }, after}) +
            Sweep({"Stop, Play, Compact", made,
                   [&] {
                       return device->StopSilentBuffer() + 2 * device->PlaySilentBuffer() +
                              4 * device->Compact();
                   },
                   after}),
        SOUND_DATA "/device_faults.txt");
}

TEST_F(Faults, OfASound) {
    const auto nothing = [] {};
    const auto serve = [this] { return Serve(m_sound.get()); };
    const auto served = [=] { serve(); };
    const auto playing = [this] { m_sound->Play(); };
    const auto fading = [this] { m_sound->Play(), m_sound->FadeStart(), m_sound->m_nFade = 0; };
    const auto rewind = [this] { return m_sound->Rewind(); };
    std::string text;
    for (const char* file : {"stream_pcm8", "stream_xa"}) {
        for (const int stream : {0, 1}) {
            const bool xa = file[7] == 'x';
            const auto load = [=, this] { return xa ? m_sound->LoadXA(stream) : m_sound->LoadWav(stream); };
            text += Sweep(OfSound(stream ? "Load as stream" : "Load", file, stream, nullptr, load));
        }
        text += Sweep(OfSound("Refill of the first half", file, 1, nothing, serve));
        text += Sweep(OfSound("Refill of the second half", file, 1, served, serve));
        text += Sweep(OfSound("Rewind of a stream", file, 1, playing, rewind));
    }
    const char* const file = "stream_pcm8";
    text += Sweep(OfSound("Play again", file, 0, playing, [this] { return m_sound->Play(); }));
    text += Sweep(OfSound("Play of a stream", file, 1, nothing, [this] { return m_sound->Play(); }));
    text += Sweep(OfSound("PlayCurrent", file, 0, nothing, [this] { return m_sound->PlayCurrent(1, 9); }));
    text += Sweep(OfSound("Rewind", file, 0, playing, rewind));
    text += Sweep(OfSound("Pause", file, 0, playing, [this] { return m_sound->Pause(); }));
    text += Sweep(OfSound("Last step of a fade", file, 0, fading, [this] { return m_sound->FadeStep(); }));
    test::ExpectStored(text, SOUND_DATA "/sound_faults.txt");
}

// A lost buffer is restored and written on; what had been in it is gone. One without room is not written.
TEST_F(Faults, ALostRingAndOneWithoutRoom) {
    CDSBuffer* sound = Make(test::ReadFile(SOUND_DATA "/files/stream_pcm8"));
    ASSERT_EQ(sound->Load(1), 0);
    test::Lose(sound->m_pDSB);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(Serve(sound), 0); }), "");
    EXPECT_EQ(test::Calls(Call::kRestore), 1);
    EXPECT_EQ(
        Contents(sound->m_pDSB),
        test::ReadFile(SOUND_DATA "/files/stream_pcm8").substr(44 + 2000, 1000) + std::string(1000, '\0'));
    test::Order(Call::kLock, DS_OK);
    test::Order(Call::kUnlock, DS_OK);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(Serve(sound), 1); }),
              "    CDSBuffer::StreamUpdateWav BufSizeCalcError\n    CDSBuffer::StreamPlayWav "
              "[B]StreamUpdateError\n");
}

}  // namespace
}  // namespace soundtest
