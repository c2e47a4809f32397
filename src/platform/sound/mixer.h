// The mixer plays voices through the host's sound output. README.md in this folder explains its clock and
// threads.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/sound/format.h"
#include "platform/sound/limiter.h"
#include "platform/sound/resampler.h"

namespace audio {

// The state of a voice at one output frame.
struct PlayState {
    bool playing = false, looping = false;
    bool lapped = false;  // has looped at least once, so its end precedes its beginning
    Position position;
};

// The state `output_frames` later, for a sound of `frames` source frames.
PlayState Advance(int64_t frames, Step step, PlayState state, int64_t output_frames);

// One sound buffer. The owner creates it, adds it to the mixer, and removes it before freeing the samples.
struct Voice {
    const unsigned char* data = nullptr;
    int64_t frames = 0;
    Format format;
    std::atomic<int64_t> silent_from = INT64_MAX;  // from this frame on it is known to hold silence

private:
    friend class Mixer;
    Step step;
    std::shared_ptr<const Filter> filter;  // null: the rates are equal

    // What callers see; guarded by Mixer::m_lock. The state at output frame `predicted_at`, after all queued
    // commands.
    PlayState predicted;
    int64_t predicted_at = 0;
    int pending = 0;  // commands not yet executed

    // Owned by the mixing thread while it mixes a block.
    PlayState now;
    int64_t at = 0;  // the output frame to which `now` belongs, while playing
    float gain = 1;
    int64_t done = 0;  // the same, relative to the first frame of the current block
    bool active = false;
    Voice *previous = nullptr, *next = nullptr;
};

struct Cursor {
    bool playing, looping;
    int64_t frame;  // source frame
};

// Lives as long as the process (directsound_internal.h). Callers use one thread; the host's sound thread
// calls Callback.
class Mixer {
public:
    Mixer();
    ~Mixer();  // every voice must have been removed
    Mixer(const Mixer&) = delete;
    Mixer& operator=(const Mixer&) = delete;

    // Opens the host's output, or reopens it at another rate; active voices keep playing. mono: both sides
    // get their mean. False: the output could not be opened, and the previous one stays.
    bool Open(int rate, bool mono);
    void Close();
    int Rate() const { return m_rate; }

    void Add(Voice* voice);
    void Remove(Voice* voice);  // no sample is read after this returns

    // Each takes effect at the output frame of the current clock reading, in call order. Playing an active
    // voice only changes whether it loops.
    void Play(Voice* voice, bool looping);
    void Stop(Voice* voice);  // keeps the position
    void Seek(Voice* voice, int64_t frame);
    void SetGain(Voice* voice, float gain);
    Cursor Where(Voice* voice);
    bool HasSoundAhead(const Voice& voice);  // plays and has more than known silence to come

private:
    enum class Kind : uint8_t { kPlay, kStop, kSeek, kGain };
    struct Command {
        Voice* voice;  // null: the voice was removed
        Kind kind;
        bool looping;
        float gain;
        int64_t position;
        int64_t frame;  // output frame at which it takes effect
    };

    void Configure(int rate);
    void Retune(Voice* voice);
    void Allocate();
    int64_t FrameAt(uint64_t time) const;

    void Enqueue(Command command);
    static void Apply(const Command& command, PlayState* state);
    static bool IsSilent(const Voice& voice, const PlayState& from);  // as far as is known
    void Execute(const Command& command);
    void ExecuteOldest();
    void ExecuteAll();
    void Rebase(int64_t frame);
    void WaitForBlock(std::unique_lock<std::mutex>& hold);

    static void Callback(void* user, float* out, int frames, uint64_t time);
    void Render(float* out, int frames, uint64_t time);
    size_t BeginBlock(int64_t first, int frames);  // returns the number of commands due
    void EndBlock(int64_t first, int frames, size_t due);
    static void Prefetch(const Voice& voice, int frames);
    void MixUntil(Voice* voice, float* out, int64_t end);
    bool MixShared(Voice* voice, int frames);
    void MixBuses(float* out, int frames);
    void MixRun(const Voice& voice, float* acc, size_t frames);
    void ReadAround(const Voice& voice, int64_t first, size_t count);
    void Activate(Voice* voice);
    void Deactivate(Voice* voice);

    int m_rate = 0;
    bool m_mono = false;

    // Guards every member down to m_voices and what callers see of a voice.
    std::mutex m_lock;
    std::condition_variable m_block_ended;
    int m_block_waiters = 0;
    bool m_mixing = false;
    int64_t m_block_end = 0;          // output frames before this have been mixed or are being mixed
    int64_t m_mixed = 0;              // output frames before this have been mixed
    int64_t m_last_queued = 0;        // frame of the newest command; frames never decrease
    std::vector<Command> m_commands;  // ring buffer
    size_t m_first_command = 0, m_command_count = 0;
    std::vector<Voice*> m_voices;

    // Rate conversion is linear, so voices at the same fraction of a source frame are summed at their own
    // rate and converted once. A hundred of them cost little more than one.
    struct Bus {
        const Filter* filter = nullptr;
        Step step;
        uint32_t fraction = 0;
        bool stereo = false;
        size_t length = 0;  // source frames
        FloatTable left, right;
    };

    Bus* BusFor(const Voice& voice, size_t frames);  // null: all buses are in use

    // Owned by the mixing thread.
    std::vector<Command> m_due;
    std::array<Bus, 8> m_buses;
    size_t m_bus_count = 0;           // in this block
    Voice* m_first_active = nullptr;  // linked list, in order of starting
    Voice* m_last_active = nullptr;
    Limiter m_limiter;
    FloatTable m_left, m_right, m_out_left, m_out_right, m_scratch;
};

}  // namespace audio
