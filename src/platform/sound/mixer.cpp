#include "platform/sound/mixer.h"

#include <algorithm>

#include "host/host.h"

namespace audio {
namespace {

constexpr size_t kQueueSize = 4096;
constexpr uint64_t kSecond = 1'000'000'000;  // ns
constexpr int kDelayPart = 5;                // a running device is never later than this fraction of a second

}  // namespace

PlayState Advance(int64_t frames, Step step, PlayState state, int64_t output_frames) {
    if (!state.playing || output_frames <= 0) return state;
    state.position = Advance(state.position, step, output_frames);
    if (state.position.frame < frames) return state;
    if (!state.looping) return {};
    state.position.frame %= frames;
    state.lapped = true;
    return state;
}

Mixer::Mixer() : m_commands(kQueueSize), m_due(kQueueSize) {}

Mixer::~Mixer() {
    Close();
}

// The output frame at a clock reading.
int64_t Mixer::FrameAt(uint64_t time) const {
    const auto rate = static_cast<uint64_t>(m_rate);
    return static_cast<int64_t>(time / kSecond * rate + time % kSecond * rate / kSecond);
}

// ---- opening and closing; no block is mixed meanwhile ----

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
    ExecuteAll();
    m_rate = rate;
    m_block_end = m_mixed = m_last_queued = 0;
    if (rate == 0) return;
    m_limiter.SetRate(rate);
    Allocate();
    const int64_t now =
        FrameAt(host::Nanoseconds());  // no output is open that this reading could cause to mix
    for (Voice* voice : m_voices) {
        Retune(voice);
        voice->predicted_at = voice->at = now;
    }
}

void Mixer::Close() {
    if (m_rate == 0) return;
    host::CloseSound();
    const std::lock_guard<std::mutex> hold(m_lock);
    ExecuteAll();
    for (Voice* voice : m_voices) {
        voice->now.playing = false;
        if (voice->active) Deactivate(voice);
        voice->predicted = voice->now;
    }
    m_rate = 0;
}

// Adapts a voice to the output's rate. All its commands must have been executed.
void Mixer::Retune(Voice* voice) {
    const uint32_t denominator = voice->step.denominator;
    voice->step = MakeStep(voice->format.rate, m_rate);
    voice->filter = FilterFor(voice->format.rate, m_rate);
    voice->now.position.fraction =
        static_cast<uint32_t>(uint64_t{voice->now.position.fraction} * voice->step.denominator / denominator);
    voice->predicted = voice->now;
    voice->predicted_at = 0;
}

// ---- voices ----

void Mixer::Add(Voice* voice) {
    // Created before taking the lock: a large table takes longer than one block.
    const auto filter = m_rate != 0 ? FilterFor(voice->format.rate, m_rate) : nullptr;
    const std::lock_guard<std::mutex> hold(m_lock);
    if (m_rate != 0) Retune(voice);
    m_voices.push_back(voice);
}

void Mixer::Remove(Voice* voice) {
    std::unique_lock<std::mutex> hold(m_lock);
    WaitForBlock(hold);
    for (size_t i = 0; i < m_command_count; ++i) {
        Command& command = m_commands[(m_first_command + i) % kQueueSize];
        if (command.voice == voice) command.voice = nullptr;
    }
    if (voice->active) Deactivate(voice);
    std::erase(m_voices, voice);
}

void Mixer::WaitForBlock(std::unique_lock<std::mutex>& hold) {
    if (!m_mixing) return;
    ++m_block_waiters;
    m_block_ended.wait(hold, [this] { return !m_mixing; });
    --m_block_waiters;
}

// ---- commands ----

void Mixer::Play(Voice* voice, bool looping) {
    Enqueue({voice, Kind::kPlay, looping, 0, 0, 0});
}
void Mixer::Stop(Voice* voice) {
    Enqueue({voice, Kind::kStop, false, 0, 0, 0});
}
void Mixer::Seek(Voice* voice, int64_t frame) {
    Enqueue({voice, Kind::kSeek, false, 0, frame, 0});
}
void Mixer::SetGain(Voice* voice, float gain) {
    Enqueue({voice, Kind::kGain, false, gain, 0, 0});
}

void Mixer::Apply(const Command& command, PlayState* state) {
    switch (command.kind) {
        case Kind::kPlay:
            state->playing = true;
            state->looping = command.looping;
            break;
        case Kind::kStop:
            state->playing = false;
            break;
        case Kind::kSeek:
            state->position = {command.position, 0};
            state->lapped = false;
            break;
        case Kind::kGain:
            break;
    }
}

// Reads the clock before taking the lock, because reading a virtual clock may mix a block. A command cannot
// change a block that is being mixed, so it takes effect after it.
void Mixer::Enqueue(Command command) {
    const uint64_t time = host::Nanoseconds();
    std::unique_lock<std::mutex> hold(m_lock);
    if (m_command_count == kQueueSize) {
        WaitForBlock(hold);
        ExecuteOldest();
    }
    const int64_t frame = FrameAt(time);
    if (frame + m_rate / 2 < m_last_queued) Rebase(frame);
    command.frame = std::max({frame, m_block_end, m_last_queued});
    m_last_queued = command.frame;
    Voice& voice = *command.voice;
    voice.predicted = Advance(voice.frames, voice.step, voice.predicted,
                              std::max(command.frame, voice.predicted_at) - voice.predicted_at);
    voice.predicted_at = std::max(command.frame, voice.predicted_at);
    Apply(command, &voice.predicted);
    ++voice.pending;
    m_commands[(m_first_command + m_command_count++) % kQueueSize] = command;
}

// A virtual clock can be set back. Commands queued for later readings are then due at once.
void Mixer::Rebase(int64_t frame) {
    for (size_t i = 0; i < m_command_count; ++i) {
        Command& command = m_commands[(m_first_command + i) % kQueueSize];
        command.frame = std::min(command.frame, frame);
    }
    for (Voice* voice : m_voices) {
        voice->predicted_at = std::min(voice->predicted_at, frame);
        voice->at = std::min(voice->at, frame);
    }
    m_last_queued = std::min(m_last_queued, frame);
    m_block_end = std::min(m_block_end, frame);
    m_mixed = std::min(m_mixed, frame);
}

void Mixer::Execute(const Command& command) {
    Voice* voice = command.voice;
    Apply(command, &voice->now);
    if (command.kind == Kind::kGain) voice->gain = command.gain;
    if (command.kind == Kind::kPlay && !voice->active) Activate(voice);
}

// Executes the oldest command between two blocks, when the queue is full. What its voice would have played
// before is not heard.
void Mixer::ExecuteOldest() {
    if (m_command_count == 0) return;
    const Command command = m_commands[m_first_command];
    m_first_command = (m_first_command + 1) % kQueueSize;
    --m_command_count;
    Voice* voice = command.voice;
    if (voice == nullptr) return;
    voice->now = Advance(voice->frames, voice->step, voice->now, command.frame - voice->at);
    voice->at = voice->now.playing ? std::max(voice->at, command.frame) : command.frame;
    Execute(command);
    --voice->pending;
}

void Mixer::ExecuteAll() {
    while (m_command_count > 0) ExecuteOldest();
}

// While the device is opening or stalled, positions follow the clock: sound that far in the past will not be
// heard.
Cursor Mixer::Where(Voice* voice) {
    const uint64_t time = host::Nanoseconds();
    const std::lock_guard<std::mutex> hold(m_lock);
    const int64_t clock = FrameAt(time);
    const auto state_at = [voice](int64_t frame) {
        return Advance(voice->frames, voice->step, voice->predicted, frame - voice->predicted_at);
    };
    // A stop takes effect at the clock's frame, so a sound that ends before it has ended: resumed after a
    // pause, it would be heard again.
    const PlayState mixed = state_at(std::max(m_mixed, clock - m_rate / kDelayPart));
    const PlayState now = state_at(std::max({clock, m_block_end, m_last_queued}));
    return {now.playing, now.playing && now.looping, mixed.position.frame};
}

bool Mixer::HasSoundAhead(const Voice& voice) {
    const uint64_t time = host::Nanoseconds();
    const std::lock_guard<std::mutex> hold(m_lock);
    const int64_t frame = std::max({FrameAt(time), m_block_end, m_last_queued});
    const PlayState now = Advance(voice.frames, voice.step, voice.predicted, frame - voice.predicted_at);
    return now.playing && !IsSilent(voice, now);
}

bool Mixer::IsSilent(const Voice& voice, const PlayState& from) {
    const int64_t silent_from = voice.silent_from.load(std::memory_order_relaxed);
    const int64_t before = voice.filter != nullptr ? voice.filter->Before() : 0;
    return silent_from == 0 || (!from.looping && from.position.frame - before >= silent_from);
}

}  // namespace audio
