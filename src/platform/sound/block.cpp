// Mixes one block of output.
#include <algorithm>

#include "platform/sound/mixer.h"

namespace audio {
namespace {

constexpr size_t kChunk = 1024;              // output frames converted at once
constexpr size_t kBusRatio = 2;              // voices up to twice the output's rate share conversions
constexpr uint64_t kSecond = 1'000'000'000;  // ns

// Tolerance, in frames, between the end of one block and the start of the next.
constexpr int64_t kRounding = 2;
constexpr int64_t kSteering = 10;  // a block may start late by this part of its length

constexpr int64_t kCacheLine = 64, kMaxPrefetch = 8192;  // bytes

float* At(float* stereo, int64_t frame) {
    return stereo + 2 * static_cast<ptrdiff_t>(frame);
}

}  // namespace

void Mixer::Allocate() {
    const size_t out = kChunk + 2 * Filter::kOverrun;
    const size_t in = Filter::MaxInputLength(m_rate, kChunk) + 2 * Filter::kOverrun;
    for (FloatTable* table : {&m_left, &m_right}) table->assign(in, 0.0f);
    for (FloatTable* table : {&m_out_left, &m_out_right, &m_scratch}) table->assign(out, 0.0f);
    const size_t shared = std::min(
        in, Filter::MaxInputLength(kMaxRate / static_cast<int>(kBusRatio), kChunk) + 2 * Filter::kOverrun);
    for (Bus& bus : m_buses) {
        bus.left.assign(shared, 0.0f);
        bus.right.assign(shared, 0.0f);
    }
}

void Mixer::Callback(void* user, float* out, int frames, uint64_t time) {
    static_cast<Mixer*>(user)->Render(out, frames, time);
}

void Mixer::Render(float* out, int frames, uint64_t time) {
    // Blocks of a virtual clock start on whole frames, truncated to nanoseconds. Blocks of a device start
    // anywhere.
    const int64_t first = FrameAt(time + kSecond / (2 * static_cast<uint64_t>(m_rate)));
    const size_t due = BeginBlock(first, frames);
    std::fill_n(out, 2 * static_cast<size_t>(frames), 0.0f);
    // Sound that fell due while the device was opening or stalled is skipped. A block that starts slightly
    // early must not stop a voice, and one that starts late by no more than the host steers must not make it
    // jump.
    const int64_t steering = std::max(kRounding, frames / kSteering);
    for (Voice* voice = m_first_active; voice != nullptr; voice = voice->next) {
        voice->done = voice->at - first;
        if (voice->done >= -steering && voice->done <= kRounding) voice->done = 0;
    }
    for (size_t i = 0; i < due; ++i) {
        const Command& command = m_due[i];
        Voice* voice = command.voice;
        int64_t at = command.frame - first;
        if (at < 0 && at >= -steering) at = 0;
        if (voice->active)
            MixUntil(voice, out, at);
        else
            voice->done = at;
        Execute(command);
    }
    for (Voice* voice = m_first_active; voice != nullptr; voice = voice->next) {
        if (voice->next != nullptr) Prefetch(*voice->next, frames);
        if (voice->done < 0) MixUntil(voice, out, 0);
        if (!MixShared(voice, frames)) MixUntil(voice, out, frames);
    }
    MixBuses(out, frames);
    if (m_mono) {
        for (float* x = out; x != At(out, frames); x += 2) x[0] = x[1] = (x[0] + x[1]) * 0.5f;
    }
    m_limiter.Run(out, static_cast<size_t>(frames));
    EndBlock(first, frames, due);
}

// Takes the commands that are due in this block or overdue.
size_t Mixer::BeginBlock(int64_t first, int frames) {
    const std::lock_guard<std::mutex> hold(m_lock);
    const int64_t end = first + frames;
    if (first + kRounding < m_block_end) Rebase(first);
    m_mixing = true;
    m_block_end = end;
    size_t due = 0;
    while (m_command_count > 0 && m_commands[m_first_command].frame < end) {
        const Command& command = m_commands[m_first_command];
        if (command.voice != nullptr) m_due[due++] = command;
        m_first_command = (m_first_command + 1) % m_commands.size();
        --m_command_count;
    }
    return due;
}

// Publishes each voice's state to the callers, unless commands are pending: their effect has already been
// predicted.
void Mixer::EndBlock(int64_t first, int frames, size_t due) {
    const std::lock_guard<std::mutex> hold(m_lock);
    for (size_t i = 0; i < due; ++i) --m_due[i].voice->pending;
    for (Voice* voice = m_first_active; voice != nullptr;) {
        Voice* next = voice->next;
        voice->at = first + voice->done;
        if (voice->pending == 0) {
            voice->predicted = voice->now;
            voice->predicted_at = voice->at;
        }
        if (!voice->now.playing) Deactivate(voice);
        voice = next;
    }
    m_mixed = first + frames;
    m_mixing = false;
    if (m_block_waiters > 0) m_block_ended.notify_all();
}

// Prefetches the next voice's samples while the current one is mixed. The hardware prefetcher follows a
// single sound by itself, but each block starts hundreds of them.
void Mixer::Prefetch(const Voice& voice, int frames) {
    if (IsSilent(voice, voice.now)) return;
    const int64_t needed = int64_t{frames} * voice.step.numerator / voice.step.denominator;
    const int64_t left = voice.frames - voice.now.position.frame;
    const int64_t bytes = std::min(std::min(needed, left) * voice.format.frame_bytes, kMaxPrefetch);
    const unsigned char* from = voice.data + voice.now.position.frame * voice.format.frame_bytes;
    for (int64_t i = 0; i < bytes; i += kCacheLine) __builtin_prefetch(from + i);
    // Without this, the compiler treats the function as free of effects and drops the calls.
    asm volatile("");
}

void Mixer::Activate(Voice* voice) {
    voice->active = true;
    voice->previous = m_last_active;
    voice->next = nullptr;
    (m_last_active != nullptr ? m_last_active->next : m_first_active) = voice;
    m_last_active = voice;
}

void Mixer::Deactivate(Voice* voice) {
    voice->active = false;
    (voice->previous != nullptr ? voice->previous->next : m_first_active) = voice->next;
    (voice->next != nullptr ? voice->next->previous : m_last_active) = voice->previous;
    voice->previous = voice->next = nullptr;
}

// Mixes a voice from its position in this block up to frame `end`. Anything before the block is skipped in
// silence.
void Mixer::MixUntil(Voice* voice, float* out, int64_t end) {
    PlayState& now = voice->now;
    if (voice->done < 0) {
        const int64_t until = std::min<int64_t>(end, 0);
        now = Advance(voice->frames, voice->step, now, until - voice->done);
        voice->done = std::max(voice->done, until);
    }
    while (now.playing && voice->done < end) {
        int64_t run = end - voice->done;
        // A filter reads across the loop's end; the unconverted path stops there.
        if (!now.looping || voice->filter == nullptr)
            run = std::min(run, FramesUntil(now.position, voice->step, voice->frames));
        run = std::min<int64_t>(run, kChunk);
        if (voice->gain > 0 && !IsSilent(*voice, now))
            MixRun(*voice, At(out, voice->done), static_cast<size_t>(run));
        voice->done += run;
        now.position = Advance(now.position, voice->step, run);
        if (now.position.frame < voice->frames) continue;
        if (!now.looping) {
            now = {};
        } else {
            now.position.frame %= voice->frames;
            now.lapped = true;
        }
    }
    voice->done = std::max(voice->done, end);
}

// Adds a converted voice that plays through the whole block to a bus. False: it is left to MixUntil.
bool Mixer::MixShared(Voice* voice, int frames) {
    PlayState& now = voice->now;
    const auto count = static_cast<size_t>(frames);
    if (voice->filter == nullptr || voice->done != 0 || !now.playing || voice->gain <= 0) return false;
    if (IsSilent(*voice, now)) return false;
    if (count > kChunk || voice->step.numerator > kBusRatio * voice->step.denominator) return false;
    if (!now.looping && FramesUntil(now.position, voice->step, voice->frames) <= frames) return false;
    Bus* bus = BusFor(*voice, count);
    if (bus == nullptr) return false;
    const Kernels& kernels = BestKernels();
    ReadAround(*voice, now.position.frame - voice->filter->Before(), bus->length);
    kernels.add_plane(m_left.data(), bus->left.data(), bus->length, voice->gain);
    if (bus->stereo) kernels.add_plane(m_right.data(), bus->right.data(), bus->length, voice->gain);
    now.position = Advance(now.position, voice->step, frames);
    if (now.position.frame >= voice->frames) {
        now.position.frame %= voice->frames;
        now.lapped = true;
    }
    voice->done = frames;
    return true;
}

Mixer::Bus* Mixer::BusFor(const Voice& voice, size_t frames) {
    const uint32_t fraction = voice.now.position.fraction;
    const bool stereo = voice.format.channels > 1;
    for (size_t i = 0; i < m_bus_count; ++i) {
        Bus& bus = m_buses[i];
        if (bus.filter == voice.filter.get() && bus.step == voice.step && bus.fraction == fraction &&
            bus.stereo == stereo)
            return &bus;
    }
    if (m_bus_count == m_buses.size()) return nullptr;
    Bus& bus = m_buses[m_bus_count++];
    bus.filter = voice.filter.get();
    bus.step = voice.step;
    bus.fraction = fraction;
    bus.stereo = stereo;
    bus.length = bus.filter->InputLength(fraction, voice.step, frames);
    std::fill_n(bus.left.data(), bus.length, 0.0f);
    if (stereo) std::fill_n(bus.right.data(), bus.length, 0.0f);
    return &bus;
}

void Mixer::MixBuses(float* out, int frames) {
    const auto count = static_cast<size_t>(frames);
    for (size_t i = 0; i < m_bus_count; ++i) {
        const Bus& bus = m_buses[i];
        const float* right = m_out_left.data();
        bus.filter->Run(bus.left.data(), bus.fraction, bus.step, count, m_out_left.data(), m_scratch.data());
        if (bus.stereo) {
            bus.filter->Run(bus.right.data(), bus.fraction, bus.step, count, m_out_right.data(),
                            m_scratch.data());
            right = m_out_right.data();
        }
        BestKernels().add_stereo(m_out_left.data(), right, out, count, 1);
    }
    m_bus_count = 0;
}

void Mixer::MixRun(const Voice& voice, float* acc, size_t frames) {
    const Kernels& kernels = BestKernels();
    const Position position = voice.now.position;
    if (voice.filter != nullptr) {
        const Filter& filter = *voice.filter;
        ReadAround(voice, position.frame - filter.Before(),
                   filter.InputLength(position.fraction, voice.step, frames));
        filter.Run(m_left.data(), position.fraction, voice.step, frames, m_out_left.data(), m_scratch.data());
        const float* right = m_out_left.data();
        if (voice.format.channels > 1) {
            filter.Run(m_right.data(), position.fraction, voice.step, frames, m_out_right.data(),
                       m_scratch.data());
            right = m_out_right.data();
        }
        return kernels.add_stereo(m_out_left.data(), right, acc, frames, voice.gain);
    }
    const unsigned char* source = voice.data + position.frame * voice.format.frame_bytes;
    const float gain16 = voice.gain * (1.0f / 32768);
    const bool is16 = voice.format.kind == SampleKind::kS16;
    if (is16 && voice.format.channels == 2) return kernels.add_stereo16(source, acc, frames, gain16);
    if (is16 && voice.format.channels == 1) return kernels.add_mono16(source, acc, frames, gain16);
    ReadFrames(voice.format, source, frames, m_left.data(), m_right.data());
    const float* right = voice.format.channels > 1 ? m_right.data() : m_left.data();
    kernels.add_stereo(m_left.data(), right, acc, frames, voice.gain);
}

// Reads `count` frames starting at `first`, which may be negative. Fills in silence around a one-shot sound
// and before the first lap of a loop.
void Mixer::ReadAround(const Voice& voice, int64_t first, size_t count) {
    const bool mono16 = voice.format.kind == SampleKind::kS16 && voice.format.channels == 1;
    const bool loops = voice.now.looping;
    for (size_t i = 0; i < count;) {
        int64_t frame = first + static_cast<int64_t>(i);
        int64_t run = static_cast<int64_t>(count - i);
        const bool silent = frame < 0 ? !(loops && voice.now.lapped) : frame >= voice.frames && !loops;
        float *left = m_left.data() + i, *right = m_right.data() + i;
        if (silent) {
            if (frame < 0) run = std::min(run, -frame);
            std::fill_n(left, run, 0.0f);
            std::fill_n(right, run, 0.0f);
        } else {
            frame %= voice.frames;
            if (frame < 0) frame += voice.frames;
            run = std::min(run, voice.frames - frame);
            const unsigned char* source = voice.data + frame * voice.format.frame_bytes;
            if (mono16)
                BestKernels().read_mono16(source, left, static_cast<size_t>(run));
            else
                ReadFrames(voice.format, source, static_cast<size_t>(run), left, right);
        }
        i += static_cast<size_t>(run);
    }
}

}  // namespace audio
