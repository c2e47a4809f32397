// The mixer: plays voices into the host's sound output. See README.md of this folder for its clock and
// threads.
#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/sound/format.h"
#include "platform/sound/limiter.h"
#include "platform/sound/resampler.h"

namespace audio {

// What a voice does at one moment, in the output's frames.
struct Motion {
    bool playing = false, looping = false;
    bool lapped = false;  // a loop has come round, so that its end sounds before its beginning
    Place place;
};

// The motion some output frames later, in a sound of so many frames.
Motion Later(int64_t frames, Step step, Motion motion, int64_t output_frames);

// One sound buffer. The owner makes it, adds it to the mixer and removes it before the samples go.
struct Voice {
    const unsigned char* data = nullptr;
    int64_t frames = 0;
    Format format;

private:
    friend class Mixer;
    Step step;
    std::shared_ptr<const Filter> filter;  // null: the rates are equal

    // Seen by callers; under the lock. What `motion` will be at frame `since`, with all orders carried out.
    Motion told;
    int64_t since = 0;
    int waiting = 0;  // orders not yet carried out

    // The mixing thread's own while it mixes.
    Motion now;
    int64_t at = 0;  // the output frame that `now` is of, while it plays
    float gain = 1;
    int64_t done = 0;  // `at`, counted from the first frame of the block that is being mixed
    bool listed = false;
    Voice *previous = nullptr, *next = nullptr;
};

struct Cursor {
    bool playing, looping;
    int64_t frame;  // of the source
};

class Mixer {
public:
    Mixer();
    ~Mixer();  // every voice must have been removed
    Mixer(const Mixer&) = delete;
    Mixer& operator=(const Mixer&) = delete;

    // Opens the host's output, or opens it anew with another rate; sounding voices go on. mono: both sides
    // get the mean of the two. False: the output could not be opened and stays as it was.
    bool Open(int rate, bool mono);
    void Close();
    int Rate() const { return m_rate; }

    void Add(Voice* voice);
    void Remove(Voice* voice);  // when it returns nothing reads the samples any more

    // Each takes effect at the output frame that the clock's reading names, in the order of the calls.
    // Playing a voice that plays changes whether it loops.
    void Play(Voice* voice, bool looping);
    void Stop(Voice* voice);  // the place stays
    void Seek(Voice* voice, int64_t frame);
    void SetGain(Voice* voice, float gain);
    Cursor Where(Voice* voice);

private:
    enum class Kind : uint8_t { kPlay, kStop, kSeek, kGain };
    struct Order {
        Voice* voice;  // null: taken back
        Kind kind;
        bool looping;
        float gain;
        int64_t place;
        int64_t frame;  // of the output
    };

    void Configure(int rate);
    void Retune(Voice* voice);
    void MakeRoom();
    int64_t FrameAt(uint64_t time) const;

    void Tell(Order order);
    static void Apply(const Order& order, Motion* motion);
    void CarryOut(const Order& order);
    void CarryOutFirst();
    void CarryOutAll();
    void Rebase(int64_t frame);
    void WaitForBlock(std::unique_lock<std::mutex>& hold);

    static void Callback(void* user, float* out, int frames, uint64_t time);
    void Render(float* out, int frames, uint64_t time);
    size_t Begin(int64_t first, int frames);  // how many orders are due
    void End(int64_t first, int frames, size_t due);
    static void FetchAhead(const Voice& voice, int frames);
    void MixUntil(Voice* voice, float* out, int64_t end);
    bool MixShared(Voice* voice, int frames);
    void MixBuses(float* out, int frames);
    void MixRun(const Voice& voice, float* acc, size_t frames);
    void ReadAround(const Voice& voice, int64_t first, size_t count);
    void List(Voice* voice);
    void Unlist(Voice* voice);

    int m_rate = 0;
    bool m_mono = false;

    std::mutex m_lock;
    std::condition_variable m_block_ended;
    int m_block_waiters = 0;
    bool m_mixing = false;
    int64_t m_taken = 0;          // output frames before this one have been mixed or are being mixed
    int64_t m_mixed = 0;          // have been mixed
    int64_t m_latest = 0;         // no order lies before an earlier one
    std::vector<Order> m_orders;  // a ring
    size_t m_first_order = 0, m_order_count = 0;
    std::vector<Voice*> m_voices;

    // Conversion is linear: voices that stand at the same fraction of a source frame are added up at their
    // own rate and converted together, so that a hundred of them cost little more than one.
    struct Bus {
        const Filter* filter = nullptr;
        Step step;
        uint32_t fraction = 0;
        bool stereo = false;
        size_t length = 0;  // source frames
        FloatTable left, right;
    };

    Bus* BusFor(const Voice& voice, size_t frames);  // null: there are no more

    // The mixing thread's own.
    std::vector<Order> m_due;
    std::array<Bus, 8> m_buses;
    size_t m_bus_count = 0;       // in this block
    Voice* m_sounding = nullptr;  // a list, in order of starting
    Voice* m_last_sounding = nullptr;
    Limiter m_limiter;
    FloatTable m_left, m_right, m_out_left, m_out_right, m_scratch;
};

}  // namespace audio
