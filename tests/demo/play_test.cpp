// The demo played by the whole program: everything is found, the pictures move; and its sound, sample by
// sample, is what its records, heard one by one, add up to when each begins in the frame that the clock says.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

#include "display/ddraw.h"
#include "platform/sound/sound_fixture.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"
#include "support/program.h"
#include "support/tempfolder.h"

namespace {

constexpr int kEnter = 13, kEsc = 27, kSpace = 32;

struct Record {
    int32_t time;  // ms of the chart
    size_t slot;
};

struct Content {
    WAVEFORMATEX format = {};
    std::string bytes;
};

enum class Act { kFrame, kPause, kResume, kRestart };

struct Happening {
    Act act;
    uint64_t clock;      // ns
    int32_t chart_time;  // kFrame
};

// What a run of the program leaves for the reckoning afterwards.
struct Course {
    std::vector<Record> records;  // in order of time
    std::vector<Content> contents = std::vector<Content>(SOUND_SLOTS);
    std::vector<Happening> happenings;
    std::set<std::vector<uint32_t>> looks;  // at a column of the picture field
    headless::SoundCapture sound;
};

// All that the chart names has come. Only the invisible notes make no sound.
void TakeChart(Course* run) {
    for (size_t i = 0; i < SOUND_SLOTS; ++i) {
        const CDSBuffer* sound = g_pDSound->m_pSlot[i];
        EXPECT_EQ(sound && sound->m_pDSB, g_pBMS->m_aszWav[i][0] != 0) << i;
        EXPECT_EQ(g_pDDraw->m_apDib[i] != nullptr, g_pBMS->m_aszBmp[i][0] != 0) << i;
        if (sound) run->contents[i] = {sound->m_wfx, Contents(sound->m_pDSB)};
    }
    const auto take = [run](const BmsEvent* list, int count) {
        for (int i = 0; i < count; ++i) {
            CDSBuffer** const slots = g_pDSound->m_pSlot;
            const auto slot = static_cast<size_t>(
                std::find(slots, slots + SOUND_SLOTS, static_cast<CDSBuffer*>(list[i].pObject)) - slots);
            ASSERT_LT(slot, static_cast<size_t>(SOUND_SLOTS)) << i;
            if (list[i].nChannel <= 0x29) run->records.push_back({list[i].nTime, slot});
        }
    };
    take(g_pBgmList, g_nBgmCount);
    take(g_pNoteList, g_nNoteCount);
    std::stable_sort(run->records.begin(), run->records.end(),
                     [](const Record& a, const Record& b) { return a.time < b.time; });
}

void TakeLook(Course* run) {
    const headless::Picture& shown = headless::ShownPicture();
    std::vector<uint32_t> column;
    for (int x : {230, 323, 400})
        for (int y = 1; y < 257; ++y)
            column.push_back(shown.pixels[static_cast<size_t>(y) * shown.width + static_cast<size_t>(x)]);
    run->looks.insert(column);
}

struct Press {
    uint64_t ms;
    int key;
    Act act;
};

void PlayDemo(const std::vector<Press>& presses, uint64_t end_ms, Course* run) {
    headless::Script script = {{500, headless::Call([run] { TakeChart(run); })}};
    for (uint64_t ms = 2000; ms < std::min<uint64_t>(end_ms, 38'001); ms += 500)
        script.push_back({ms, headless::Call([run] { TakeLook(run); })});
    for (const Press& press : presses) {
        script.push_back({press.ms, headless::Call([run, press] {
                              run->happenings.push_back({press.act, headless::Clock(), 0});
                          })});
        script.push_back({press.ms, headless::Key(press.key)});
    }
    script.push_back({end_ms, headless::Key(kEsc)});
    test::RunOptions options;
    options.end_ms = end_ms + 10'000;
    options.prepare = [run] {
        headless::OnFrame([run](const headless::Frame&) {
            const uint32_t chart_time = static_cast<uint32_t>(g_dwSeekTime) - g_dwStartTime + g_dwNowTime;
            if (g_bPaused) return;
            run->happenings.push_back(
                {Act::kFrame, uint64_t{g_dwNowTime} * 1'000'000, static_cast<int32_t>(chart_time)});
        });
    };
    const std::string path = test::TempFolder::Backslashes(LUMETRA_DEMO_FOLDER "/demo.bms");
    const test::RunResult result = test::RunProgram("-P -D " + path, script, options);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_TRUE(result.faults.empty() && result.boxes.empty());
    EXPECT_EQ(result.log, "-P Option ON\n");
    run->sound = headless::Sound();
    // What follows the key that ends the program is no chart's sound any more.
    const auto end = headless::SoundFrame(headless::kClockOrigin + end_ms * 1'000'000) - run->sound.first;
    ASSERT_LE(static_cast<size_t>(2 * end), run->sound.samples.size());
    run->sound.samples.resize(static_cast<size_t>(2 * end));
}

// The sound as it is heard alone, from its first frame on; interleaved.
std::vector<float> HearAlone(const Content& content) {
    headless::Reset();
    IDirectSound* device = nullptr;
    EXPECT_EQ(DirectSoundCreate(nullptr, &device, nullptr), DS_OK);
    const DSBUFFERDESC desc = Describe(&content.format, static_cast<DWORD>(content.bytes.size()), 0);
    IDirectSoundBuffer* buffer = nullptr;
    EXPECT_EQ(device->CreateSoundBuffer(&desc, &buffer, nullptr), DS_OK);
    void* part = nullptr;
    DWORD size = 0;
    EXPECT_EQ(buffer->Lock(0, 0, &part, &size, nullptr, nullptr, DSBLOCK_ENTIREBUFFER), DS_OK);
    std::memcpy(part, content.bytes.data(), std::min<size_t>(size, content.bytes.size()));
    buffer->Unlock(part, size, nullptr, 0);
    buffer->Play(0, 0, 0);
    headless::AdvanceClock(content.bytes.size() * 1'000'000'000 / content.format.nAvgBytesPerSec +
                           10'000'000);
    std::vector<float> heard = headless::Sound().samples;
    buffer->Release();
    device->Release();
    return heard;
}

// A slot's one voice: starting it again cuts it off.
struct Voice {
    static constexpr size_t kIdle = SIZE_MAX / 4;
    std::vector<float> alone;
    size_t at = kIdle, since = 0;  // at: the place in `alone` that it has at the output's sample `since`

    // Adds what the voice has given up to a sample; it stands still from there.
    void Cut(std::vector<float>* sum, size_t until) {
        for (; since < until && at < alone.size(); ++since, ++at) (*sum)[since] += alone[at];
        since = until;
    }
};

// Compares the run with what it comes to; the number of records that have begun.
size_t ExpectAsReckoned(const Course& run) {
    const std::vector<float>& heard = run.sound.samples;
    std::vector<Voice> voices(SOUND_SLOTS);
    for (size_t i = 0; i < SOUND_SLOTS; ++i)
        if (!run.contents[i].bytes.empty()) voices[i].alone = HearAlone(run.contents[i]);
    std::vector<float> sum(heard.size());
    size_t next = 0, started = 0;
    for (const Happening& happening : run.happenings) {
        const auto sample =
            static_cast<size_t>(2 * (headless::SoundFrame(happening.clock) - run.sound.first));
        if (happening.act == Act::kFrame) {
            for (; next < run.records.size() && run.records[next].time <= happening.chart_time; ++next) {
                voices[run.records[next].slot].Cut(&sum, sample);
                voices[run.records[next].slot].at = 0;
                ++started;
            }
            continue;
        }
        for (Voice& voice : voices) {
            if (happening.act == Act::kResume)
                voice.since = sample;
            else
                voice.Cut(&sum, sample);
            if (happening.act == Act::kRestart) voice.at = Voice::kIdle;
        }
        if (happening.act == Act::kRestart) next = 0;
    }
    for (Voice& voice : voices) voice.Cut(&sum, sum.size());
    for (size_t i = 0; i < sum.size(); ++i) {
        if (std::abs(sum[i] - heard[i]) < 1e-5f) continue;
        ADD_FAILURE() << "sample " << i << ": " << heard[i] << ", not " << sum[i];
        break;
    }
    return started;
}

TEST(DemoOnsets, EveryRecordBeginsInTheFrameThatTheClockSays) {
    Course run;
    ASSERT_NO_FATAL_FAILURE(PlayDemo({}, 42'000, &run));
    EXPECT_GT(run.records.size(), 500u);
    EXPECT_EQ(ExpectAsReckoned(run), run.records.size());
    EXPECT_GT(run.looks.size(), 40u) << "of 73 looks at the pictures few differ";
    float peak = 0;
    for (float x : run.sound.samples) peak = std::max(peak, std::abs(x));
    EXPECT_NEAR(peak, 0.83f, 0.14f);
}

TEST(DemoOnsets, PauseResumeAndRestartLoseAndRepeatNothing) {
    Course run;
    ASSERT_NO_FATAL_FAILURE(PlayDemo({{5'000, kSpace, Act::kPause},
                                      {5'777, kSpace, Act::kResume},
                                      {9'013, kSpace, Act::kPause},
                                      {9'400, kSpace, Act::kResume},
                                      {12'000, kEnter, Act::kRestart}},
                                     16'000, &run));
    EXPECT_GT(ExpectAsReckoned(run), 140u);
}

}  // namespace
