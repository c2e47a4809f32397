// The whole program plays a small chart. What the chart's clock says of each frame decides which sounds begin
// there, and the captured sound is compared with that, sample by sample: onsets, cuts, pauses, and the
// restart.
#include "playback/playback.h"
#include "shell/shell.h"
#include "sound/dsound.h"
#include "sound/sound_support.h"
#include "support/program.h"

namespace soundtest {
namespace {

enum class Act { kFire, kPause, kResume, kRestart };

struct Event {
    int64_t frame;  // of the output
    Act act;
    int slot;
};

struct Firing {
    int time;          // of the record
    int64_t previous;  // chart time of the frame before, and of this one
    int64_t now;
};

std::vector<Event> g_events;
std::vector<Firing> g_firings;
int64_t g_last_frame = 0;
int64_t g_previous = 0;

int64_t OutputFrame() {
    return headless::SoundFrame(headless::Clock());
}

int SlotOf(const void* object) {
    for (int slot = 0; slot < SOUND_SLOTS; ++slot) {
        if (g_pDSound->m_pSlot[slot] == object) return slot;
    }
    return -1;
}

std::vector<int32_t> DoneOf(const BmsEvent* list, int32_t count) {
    std::vector<int32_t> done;
    for (int32_t i = 0; i < count; ++i) done.push_back(list[i].bDone);
    return done;
}

void NoteFired(const BmsEvent* list, int32_t count, const std::vector<int32_t>& before, int64_t frame,
               int64_t now) {
    for (int32_t i = 0; i < count; ++i) {
        if (list[i].pObject == nullptr || before[static_cast<size_t>(i)] || !list[i].bDone) continue;
        g_events.push_back({frame, Act::kFire, SlotOf(list[i].pObject)});
        g_firings.push_back({list[i].nTime, g_previous, now});
    }
}

extern "C" void __real__Z9PlayFramev();
extern "C" void __wrap__Z9PlayFramev();
extern "C" void __wrap__Z9PlayFramev() {
    const int64_t frame = OutputFrame();
    const std::vector<int32_t> bgm = DoneOf(g_pBgmList, g_nBgmCount),
                               notes = DoneOf(g_pNoteList, g_nNoteCount);
    __real__Z9PlayFramev();
    const int64_t now =
        static_cast<int32_t>(static_cast<uint32_t>(g_dwSeekTime) - g_dwStartTime + g_dwNowTime);
    NoteFired(g_pBgmList, g_nBgmCount, bgm, frame, now);
    NoteFired(g_pNoteList, g_nNoteCount, notes, frame, now);
    g_previous = now;
    g_last_frame = frame;
}

#define NOTED(SYMBOL, PARAMETERS, ARGUMENTS, ACT)                             \
    extern "C" void __real_##SYMBOL PARAMETERS;                               \
    extern "C" void __wrap_##SYMBOL PARAMETERS;                               \
    extern "C" void __wrap_##SYMBOL PARAMETERS {                              \
        const int paused = g_bPaused;                                         \
        g_events.push_back({OutputFrame(), ACT, -1});                         \
        __real_##SYMBOL ARGUMENTS;                                            \
        if (paused == g_bPaused && ACT != Act::kRestart) g_events.pop_back(); \
    }
NOTED(_Z10PauseCharti, (int user), (user), Act::kPause)
NOTED(_Z11ResumeCharti, (int user), (user), Act::kResume)
NOTED(_Z12RestartChartv, (), (), Act::kRestart)

// One slot's sound as it must be heard.
class Voice {
public:
    Voice() = default;
    explicit Voice(const Samples& samples) : m_samples(samples) {}
    void Do(const Event& event, int slot) {
        if (event.act == Act::kFire && event.slot == slot) {
            m_place = 0;
            m_playing = true;
        } else if (event.act == Act::kPause) {
            m_was_playing = m_playing;
            m_playing = false;
        } else if (event.act == Act::kResume) {
            m_playing = m_playing || m_was_playing;
            m_was_playing = false;
        } else if (event.act == Act::kRestart) {
            m_playing = m_was_playing = false;
        }
    }
    float Next() {
        if (!m_playing) return 0;
        if (m_place >= m_samples.size()) m_playing = false;
        return m_place < m_samples.size() ? static_cast<float>(m_samples[m_place++]) / 32768 : 0;
    }

private:
    Samples m_samples;
    size_t m_place = 0;
    bool m_playing = false, m_was_playing = false;
};

TEST(Onsets, AsTheClockSays) {
    test::TempFolder folder;
    std::vector<Voice> voices(4);
    for (int slot = 1; slot <= 3; ++slot) {  // one longer than the time between its firings
        const Samples samples = Music(slot == 2 ? 60000 : 9000 + slot, 1, 44100, static_cast<uint32_t>(slot));
        folder.Write("s" + std::to_string(slot) + ".wav", test::Wav(samples));
        voices[static_cast<size_t>(slot)] = Voice(samples);
    }
    const std::string chart = folder.Write(
        "song.bms",
        test::Chart({"#TITLE t", "#BPM 131", "#WAV01 s1.wav", "#WAV02 s2.wav", "#WAV03 s3.wav",
                     "#00101:0100000001000300", "#00101:0002", "#00111:010203", "#00114:0200020002000200",
                     "#00202:0.75", "#00203:FF", "#00201:01030101030101", "#00212:0000000000000003",
                     "#00301:02", "#00311:0101010101010101"}));
    g_events.clear();
    g_firings.clear();
    const test::RunResult run =
        test::RunProgram("-P " + test::TempFolder::Backslashes(chart), {{3333, headless::Key(32)},
                                                                        {3900, headless::Key(32)},
                                                                        {5500, headless::Key(13)},
                                                                        {11000, headless::Key(27)}});
    ASSERT_TRUE(run.faults.empty()) << run.faults[0];
    ASSERT_GT(g_firings.size(), 30u);  // 28 in the chart, and some again after the restart
    for (const Firing& firing : g_firings) {
        EXPECT_LE(firing.time, firing.now);
        EXPECT_GT(firing.time, firing.previous) << "a frame late";
    }
    int seen[4] = {};
    for (const Event& event : g_events) ++seen[static_cast<int>(event.act)];
    EXPECT_EQ(seen[static_cast<int>(Act::kRestart)], 1);
    EXPECT_GE(seen[static_cast<int>(Act::kPause)], 1);
    EXPECT_GE(seen[static_cast<int>(Act::kResume)], 1);

    const headless::SoundCapture& sound = headless::Sound();
    ASSERT_GT(sound.End(), g_last_frame - 1);
    size_t next = 0;
    float loudest = 0;
    for (int64_t frame = sound.first; frame < g_last_frame; ++frame) {
        for (; next < g_events.size() && g_events[next].frame <= frame; ++next) {
            for (int slot = 1; slot <= 3; ++slot) voices[static_cast<size_t>(slot)].Do(g_events[next], slot);
        }
        float expected = 0;
        for (Voice& voice : voices) expected += voice.Next();
        loudest = std::max(loudest, std::abs(expected));
        ASSERT_NEAR(sound.At(frame, 0), expected, 1e-6) << frame;
        ASSERT_NEAR(sound.At(frame, 1), expected, 1e-6) << frame;
    }
    EXPECT_GT(loudest, 0.3f);
    EXPECT_LT(loudest, 1.0f);  // else the limiter would be heard
}

}  // namespace
}  // namespace soundtest
