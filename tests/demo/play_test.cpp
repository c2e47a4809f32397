// The demo played by the whole program: everything is found, the pictures move; and its sound, sample by
// sample, is what its records, heard one by one, add up to when each begins in the frame that the clock says.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

#include "display/ddraw.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"
#include "sound_platform/sound_fixture.h"
#include "support/program.h"
#include "support/tempfolder.h"

namespace {

constexpr int kEnter = 13, kEsc = 27, kSpace = 32;
constexpr int kLastNoteChannel = 0x29;

struct Record {
    int32_t time;  // ms of the chart
    int slot;
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
    std::set<uint64_t> fields;  // the different looks of the picture field
    headless::SoundCapture sound;
};

// All that the chart names has come, and no record is without its sound.
void ExpectAllFound() {
    int sounds = 0, pictures = 0;
    for (int i = 0; i < SOUND_SLOTS; ++i) {
        const CDSBuffer* sound = g_pDSound->m_pSlot[i];
        const bool named = g_pBMS->m_aszWav[i][0] != 0, drawn = g_pBMS->m_aszBmp[i][0] != 0;
        EXPECT_EQ(sound != nullptr && sound->m_pDSB != nullptr, named) << i;
        EXPECT_EQ(g_pDDraw->m_apDib[i] != nullptr, drawn) << i;
        sounds += named;
        pictures += drawn;
    }
    EXPECT_GT(sounds, 60);
    EXPECT_GT(pictures, 15);
    for (int i = 0; i < g_nNoteCount; ++i) EXPECT_NE(g_pNoteList[i].pObject, nullptr) << i;
    for (int i = 0; i < g_nBgmCount; ++i) EXPECT_NE(g_pBgmList[i].pObject, nullptr) << i;
}

// The picture field of the window as it is now, as one number.
uint64_t FieldHash() {
    const headless::Picture& shown = headless::ShownPicture();
    uint64_t hash = 14695981039346656037u;
    for (int y = 1; y < 257; ++y) {
        for (int x = 195; x < 451; ++x)
            hash = (hash ^ shown.pixels[static_cast<size_t>(y) * shown.width + x]) * 1099511628211u;
    }
    return hash;
}

void TakeRecords(const BmsEvent* list, int count, Course* run) {
    for (int i = 0; i < count; ++i) {
        if (list[i].nChannel > kLastNoteChannel) continue;  // the invisible ones make no sound
        CDSBuffer** const end = g_pDSound->m_pSlot + SOUND_SLOTS;
        CDSBuffer** const slot = std::find(g_pDSound->m_pSlot, end, list[i].pObject);
        ASSERT_NE(slot, end) << i;
        run->records.push_back({list[i].nTime, static_cast<int>(slot - g_pDSound->m_pSlot)});
    }
}

void TakeChart(Course* run) {
    TakeRecords(g_pBgmList, g_nBgmCount, run);
    TakeRecords(g_pNoteList, g_nNoteCount, run);
    std::stable_sort(run->records.begin(), run->records.end(),
                     [](const Record& a, const Record& b) { return a.time < b.time; });
    for (int i = 0; i < SOUND_SLOTS; ++i) {
        CDSBuffer* sound = g_pDSound->m_pSlot[i];
        if (sound == nullptr) continue;
        run->contents[static_cast<size_t>(i)] = {sound->m_wfx, Contents(sound->m_pDSB)};
    }
}

struct Press {
    uint64_t ms;
    int key;
    Act act;
};

void PlayDemo(const std::vector<Press>& presses, uint64_t end_ms, Course* run) {
    headless::Script script = {{500, headless::Call([run] { TakeChart(run), ExpectAllFound(); })}};
    for (uint64_t ms = 2000; ms < std::min<uint64_t>(end_ms, 38'001); ms += 500)
        script.push_back({ms, headless::Call([run] { run->fields.insert(FieldHash()); })});
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
            if (!g_bPaused)
                run->happenings.push_back(
                    {Act::kFrame, uint64_t{g_dwNowTime} * 1'000'000, static_cast<int32_t>(chart_time)});
        });
    };
    const std::string path = test::TempFolder::Backslashes(LUMETRA_DEMO_FOLDER "/demo.bms");
    const test::RunResult result = test::RunProgram("-P -D " + path, script, options);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_TRUE(result.faults.empty()) << result.faults.front();
    EXPECT_TRUE(result.boxes.empty());
    EXPECT_EQ(result.log, "-P Option ON\n");
    run->sound = headless::Sound();
    // What lies behind the key that ends the program is no chart's sound any more.
    const auto end = headless::SoundFrame(headless::kClockOrigin + end_ms * 1'000'000) - run->sound.first;
    ASSERT_LE(static_cast<size_t>(2 * end), run->sound.samples.size());
    run->sound.samples.resize(static_cast<size_t>(2 * end));
}

// The sound as it is heard alone, from its first frame on; interleaved.
std::vector<float> HearAlone(const Content& content) {
    headless::Reset();
    IDirectSound* device = nullptr;
    EXPECT_EQ(DirectSoundCreate(nullptr, &device, nullptr), DS_OK);
    const DSBUFFERDESC desc = {sizeof(DSBUFFERDESC), 0, static_cast<DWORD>(content.bytes.size()), 0,
                               &content.format};
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

// Adds up what is to be heard. Slots have one voice: starting it cuts it off.
class Reckoning {
public:
    explicit Reckoning(const Course& run) : m_run(run), m_voices(SOUND_SLOTS) {
        m_expected.assign(run.sound.samples.size(), 0.0f);
        for (size_t i = 0; i < SOUND_SLOTS; ++i)
            if (!run.contents[i].bytes.empty()) m_voices[i].alone = HearAlone(run.contents[i]);
    }

    void Follow() {
        for (const Happening& happening : m_run.happenings) {
            const int64_t frame = headless::SoundFrame(happening.clock) - m_run.sound.first;
            switch (happening.act) {
                case Act::kFrame:
                    for (;
                         m_next < m_run.records.size() && m_run.records[m_next].time <= happening.chart_time;
                         ++m_next, ++m_started)
                        Start(m_run.records[m_next].slot, frame);
                    break;
                case Act::kPause:
                    for (Voice& voice : m_voices) Cut(&voice, frame);
                    break;
                case Act::kResume:
                    for (Voice& voice : m_voices) voice.since = frame;
                    break;
                case Act::kRestart:
                    for (Voice& voice : m_voices) Cut(&voice, frame), voice.at = kIdle;
                    m_next = 0;
                    break;
            }
        }
        for (Voice& voice : m_voices) Cut(&voice, static_cast<int64_t>(m_expected.size() / 2));
    }

    const std::vector<float>& Expected() const { return m_expected; }
    size_t Started() const { return m_started; }

private:
    static constexpr int64_t kIdle = INT64_MAX / 4;
    struct Voice {
        std::vector<float> alone;
        int64_t at = kIdle, since = 0;  // at: the place in `alone` that it has at the output's frame `since`
    };

    void Start(int slot, int64_t frame) {
        Voice& voice = m_voices[static_cast<size_t>(slot)];
        Cut(&voice, frame);
        voice.at = 0;
    }

    // Adds what the voice has given up to a frame; it stands still from there.
    void Cut(Voice* voice, int64_t frame) {
        const auto length = static_cast<int64_t>(voice->alone.size() / 2);
        for (int64_t i = 2 * voice->since; i < 2 * frame && voice->at < length; i += 2, ++voice->at) {
            m_expected[static_cast<size_t>(i)] += voice->alone[static_cast<size_t>(2 * voice->at)];
            m_expected[static_cast<size_t>(i + 1)] += voice->alone[static_cast<size_t>(2 * voice->at + 1)];
        }
        voice->since = frame;
    }

    const Course& m_run;
    std::vector<Voice> m_voices;
    std::vector<float> m_expected;
    size_t m_next = 0, m_started = 0;
};

// The number of records that have begun.
size_t ExpectAsReckoned(const Course& run) {
    Reckoning reckoning(run);
    reckoning.Follow();
    const std::vector<float>& expected = reckoning.Expected();
    for (size_t i = 0; i < expected.size(); ++i) {
        if (std::abs(expected[i] - run.sound.samples[i]) < 1e-5f) continue;
        ADD_FAILURE() << "frame " << i / 2 << " side " << i % 2 << ": " << run.sound.samples[i] << ", not "
                      << expected[i];
        break;
    }
    return reckoning.Started();
}

TEST(DemoOnsets, EveryRecordBeginsInTheFrameThatTheClockSays) {
    Course run;
    ASSERT_NO_FATAL_FAILURE(PlayDemo({}, 42'000, &run));
    EXPECT_GT(run.records.size(), 500u);
    EXPECT_EQ(ExpectAsReckoned(run), run.records.size());
    EXPECT_GT(run.fields.size(), 40u) << "of 73 looks at the pictures few differ";

    float peak = 0;
    for (float x : run.sound.samples) peak = std::max(peak, std::abs(x));
    EXPECT_LT(peak, 0.97f);
    EXPECT_GT(peak, 0.7f);
    int64_t first = 0;
    while (first < run.sound.End() && std::abs(run.sound.At(first, 0)) < 0.002f) ++first;
    EXPECT_NEAR(static_cast<double>(first) / run.sound.rate, 1.0, 0.06);
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
