#include "platform/sound/mixer.h"

#include <algorithm>

#include "host/host.h"

namespace audio {
namespace {

constexpr size_t kOrders = 4096;
constexpr uint64_t kSecond = 1'000'000'000;  // ns
constexpr int kLatest = 5;                   // the part of a second by which a device that runs is never late

}  // namespace

Motion Later(int64_t frames, Step step, Motion motion, int64_t output_frames) {
    if (!motion.playing || output_frames <= 0) return motion;
    motion.place = Advance(motion.place, step, output_frames);
    if (motion.place.frame < frames) return motion;
    if (!motion.looping) return {};
    motion.place.frame %= frames;
    motion.lapped = true;
    return motion;
}

Mixer::Mixer() : m_orders(kOrders), m_due(kOrders) {}

Mixer::~Mixer() {
    Close();
}

// The output frame that sounds at a clock reading.
int64_t Mixer::FrameAt(uint64_t time) const {
    const auto rate = static_cast<uint64_t>(m_rate);
    return static_cast<int64_t>(time / kSecond * rate + time % kSecond * rate / kSecond);
}

// ---- opening and closing: no block is mixed meanwhile ----

bool Mixer::Open(int rate, bool mono) {
    const int before = m_rate;
    const bool mono_before = m_mono;
    if (before == rate) {
        std::unique_lock<std::mutex> hold(m_lock);
        WaitForBlock(hold);
        m_mono = mono;
        return true;
    }
    if (before != 0) host::CloseSound();
    Configure(rate);
    m_mono = mono;
    if (host::OpenSound(rate, Callback, this)) return true;
    Configure(before);
    m_mono = mono_before;
    if (before != 0) host::OpenSound(before, Callback, this);
    return false;
}

void Mixer::Configure(int rate) {
    const std::lock_guard<std::mutex> hold(m_lock);
    CarryOutAll();
    m_rate = rate;
    m_taken = m_mixed = m_latest = 0;
    if (rate == 0) return;
    m_limiter.SetRate(rate);
    MakeRoom();
    const int64_t now = FrameAt(host::Nanoseconds());  // no output is open that this could make mix
    for (Voice* voice : m_voices) {
        Retune(voice);
        voice->since = voice->at = now;
    }
}

void Mixer::Close() {
    if (m_rate == 0) return;
    host::CloseSound();
    const std::lock_guard<std::mutex> hold(m_lock);
    CarryOutAll();
    for (Voice* voice : m_voices) {
        voice->now.playing = false;
        if (voice->listed) Unlist(voice);
        voice->told = voice->now;
    }
    m_rate = 0;
}

// Fits a voice to the output's rate. All its orders have been carried out.
void Mixer::Retune(Voice* voice) {
    const uint32_t denominator = voice->step.denominator;
    voice->step = MakeStep(voice->format.rate, m_rate);
    voice->filter = FilterFor(voice->format.rate, m_rate);
    voice->now.place.fraction =
        static_cast<uint32_t>(uint64_t{voice->now.place.fraction} * voice->step.denominator / denominator);
    voice->told = voice->now;
    voice->since = 0;
}

// ---- voices ----

void Mixer::Add(Voice* voice) {
    // Made before the lock is taken: a large table takes longer than a block lasts.
    const auto filter = m_rate != 0 ? FilterFor(voice->format.rate, m_rate) : nullptr;
    const std::lock_guard<std::mutex> hold(m_lock);
    if (m_rate != 0) Retune(voice);
    m_voices.push_back(voice);
}

void Mixer::Remove(Voice* voice) {
    std::unique_lock<std::mutex> hold(m_lock);
    WaitForBlock(hold);
    for (size_t i = 0; i < m_order_count; ++i) {
        Order& order = m_orders[(m_first_order + i) % kOrders];
        if (order.voice == voice) order.voice = nullptr;
    }
    if (voice->listed) Unlist(voice);
    std::erase(m_voices, voice);
}

void Mixer::WaitForBlock(std::unique_lock<std::mutex>& hold) {
    if (!m_mixing) return;
    ++m_block_waiters;
    m_block_ended.wait(hold, [this] { return !m_mixing; });
    --m_block_waiters;
}

// ---- orders ----

void Mixer::Play(Voice* voice, bool looping) {
    Tell({voice, Kind::kPlay, looping, 0, 0, 0});
}
void Mixer::Stop(Voice* voice) {
    Tell({voice, Kind::kStop, false, 0, 0, 0});
}
void Mixer::Seek(Voice* voice, int64_t frame) {
    Tell({voice, Kind::kSeek, false, 0, frame, 0});
}
void Mixer::SetGain(Voice* voice, float gain) {
    Tell({voice, Kind::kGain, false, gain, 0, 0});
}

void Mixer::Apply(const Order& order, Motion* motion) {
    switch (order.kind) {
        case Kind::kPlay:
            motion->playing = true;
            motion->looping = order.looping;
            break;
        case Kind::kStop:
            motion->playing = false;
            break;
        case Kind::kSeek:
            motion->place = {order.place, 0};
            motion->lapped = false;
            break;
        case Kind::kGain:
            break;
    }
}

// The clock is read before the lock is taken: reading a virtual clock may mix a block. What is being mixed
// already can't be changed any more, so an order comes behind it.
void Mixer::Tell(Order order) {
    const uint64_t time = host::Nanoseconds();
    std::unique_lock<std::mutex> hold(m_lock);
    if (m_order_count == kOrders) {
        WaitForBlock(hold);
        CarryOutFirst();
    }
    const int64_t frame = FrameAt(time);
    if (frame + m_rate / 2 < m_latest) Rebase(frame);
    order.frame = std::max({frame, m_taken, m_latest});
    m_latest = order.frame;
    Voice& voice = *order.voice;
    voice.told =
        Later(voice.frames, voice.step, voice.told, std::max(order.frame, voice.since) - voice.since);
    voice.since = std::max(order.frame, voice.since);
    Apply(order, &voice.told);
    ++voice.waiting;
    m_orders[(m_first_order + m_order_count++) % kOrders] = order;
}

// A virtual clock can be set back: what waits for its old readings is then due at once.
void Mixer::Rebase(int64_t frame) {
    for (size_t i = 0; i < m_order_count; ++i) {
        Order& order = m_orders[(m_first_order + i) % kOrders];
        order.frame = std::min(order.frame, frame);
    }
    for (Voice* voice : m_voices) {
        voice->since = std::min(voice->since, frame);
        voice->at = std::min(voice->at, frame);
    }
    m_latest = std::min(m_latest, frame);
    m_taken = std::min(m_taken, frame);
    m_mixed = std::min(m_mixed, frame);
}

void Mixer::CarryOut(const Order& order) {
    Voice* voice = order.voice;
    Apply(order, &voice->now);
    if (order.kind == Kind::kGain) voice->gain = order.gain;
    if (order.kind == Kind::kPlay && !voice->listed) List(voice);
}

// Between two blocks, when more orders have come than the ring holds. What the voice would have played until
// then is not heard.
void Mixer::CarryOutFirst() {
    if (m_order_count == 0) return;
    const Order order = m_orders[m_first_order];
    m_first_order = (m_first_order + 1) % kOrders;
    --m_order_count;
    Voice* voice = order.voice;
    if (voice == nullptr) return;
    voice->now = Later(voice->frames, voice->step, voice->now, order.frame - voice->at);
    voice->at = voice->now.playing ? std::max(voice->at, order.frame) : order.frame;
    CarryOut(order);
    --voice->waiting;
}

void Mixer::CarryOutAll() {
    while (m_order_count > 0) CarryOutFirst();
}

// While the device is being opened, or stands still, time goes on without it: what lies so far behind the
// clock will not be heard any more.
Cursor Mixer::Where(Voice* voice) {
    const uint64_t time = host::Nanoseconds();
    const std::lock_guard<std::mutex> hold(m_lock);
    const int64_t passed = std::max(m_mixed, FrameAt(time) - m_rate / kLatest);
    const Motion motion = Later(voice->frames, voice->step, voice->told, passed - voice->since);
    return {motion.playing, motion.playing && motion.looping, motion.place.frame};
}

}  // namespace audio
