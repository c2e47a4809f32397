#include "host/headless/sound.h"

#include <algorithm>

#include "host/headless/headless.h"
#include "host/host.h"

namespace {

constexpr int kBlock = 1024;  // frames
constexpr uint64_t kSecond = 1'000'000'000;

struct Output {
    host::MixCallback callback = nullptr;  // null: closed
    void* user = nullptr;
    int64_t next = 0;  // the next frame to mix
    bool refuse = false;
    bool stalled = false;
    int lag_frames = 0;  // of a block of a lagging device
    uint64_t lag = 0;    // ns
    int lag_apart = 0;   // frames
    headless::SoundSink sink = nullptr;
    void* sink_user = nullptr;
    headless::SoundCapture capture;
};

Output g_output;

int64_t FrameAt(uint64_t time, int rate) {
    const auto r = static_cast<uint64_t>(rate);
    return static_cast<int64_t>(time / kSecond * r + time % kSecond * r / kSecond);
}

// The first clock reading at which a frame has begun.
uint64_t TimeOf(int64_t frame, int rate) {
    const auto n = static_cast<uint64_t>(frame), r = static_cast<uint64_t>(rate);
    return n / r * kSecond + (n % r * kSecond + r - 1) / r;
}

int64_t OriginFrame() {
    return FrameAt(headless::kClockOrigin, g_output.capture.rate);
}

void MixBlock(int frames) {
    const int rate = g_output.capture.rate;
    float block[2 * kBlock];
    std::vector<float>& kept = g_output.capture.samples;
    float* out = block;
    if (g_output.sink == nullptr) {
        kept.resize(kept.size() + 2 * static_cast<size_t>(frames));
        out = kept.data() + kept.size() - 2 * static_cast<size_t>(frames);
    }
    if (g_output.stalled)
        std::fill_n(out, 2 * static_cast<size_t>(frames), 0.0f);
    else
        g_output.callback(g_output.user, out, frames, TimeOf(g_output.next, rate));
    g_output.next += frames;
    if (g_output.sink != nullptr) g_output.sink(g_output.sink_user, out, frames, rate);
}

void OnClock(uint64_t, uint64_t now) {
    if (g_output.callback == nullptr) return;
    const int64_t end = FrameAt(now - std::min(now, g_output.lag), g_output.capture.rate);
    const int whole = g_output.lag_frames;
    for (; whole > 0 && g_output.next + whole <= end; g_output.next += g_output.lag_apart) MixBlock(whole);
    if (whole > 0) return;
    while (g_output.next < end) MixBlock(static_cast<int>(std::min<int64_t>(kBlock, end - g_output.next)));
}

// An output that is still open continues from the clock's origin.
void OnReset() {
    g_output.refuse = g_output.stalled = false;
    headless::LagSound(0, 0);
    g_output.sink = nullptr;
    g_output.capture.samples.clear();
    if (g_output.callback == nullptr) {
        g_output.capture = {};
    } else {
        g_output.next = FrameAt(headless::Clock(), g_output.capture.rate);
        g_output.capture.first = g_output.next - OriginFrame();
    }
}

}  // namespace

namespace headless {

int64_t SoundFrame(uint64_t nanoseconds) {
    return FrameAt(nanoseconds, g_output.capture.rate) - OriginFrame();
}

bool SoundIsOpen() {
    return g_output.callback != nullptr;
}

int SoundRate() {
    return g_output.capture.rate;
}

const SoundCapture& Sound() {
    return g_output.capture;
}

void SetSoundSink(SoundSink sink, void* user) {
    g_output.sink = sink;
    g_output.sink_user = user;
    g_output.capture.samples.clear();
    g_output.capture.first = g_output.next - OriginFrame();
}

void RefuseSound(bool refuse) {
    g_output.refuse = refuse;
}

void StallSound(bool stall) {
    g_output.stalled = stall;
}

void LagSound(int frames, uint64_t nanoseconds, int apart) {
    g_output.lag_frames = std::min(frames, kBlock);
    g_output.lag = nanoseconds;
    g_output.lag_apart = apart;
}

}  // namespace headless

namespace host {

bool OpenSound(int rate, MixCallback callback, void* user) {
    if (g_output.refuse || g_output.callback != nullptr || rate <= 0) return false;
    headless::OnClock(OnClock);
    headless::OnReset(OnReset);
    g_output.callback = callback;
    g_output.user = user;
    g_output.capture = {};
    g_output.capture.rate = rate;
    g_output.next = FrameAt(headless::Clock(), rate);
    g_output.capture.first = g_output.next - OriginFrame();
    return true;
}

// The virtual device asks as soon as the clock moves.
bool SoundIsPending() {
    return false;
}

void AwaitSound(int) {}

void CloseSound() {
    g_output.callback = nullptr;
}

}  // namespace host
