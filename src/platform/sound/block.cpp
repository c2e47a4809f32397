// Mixing one block of output.
#include <algorithm>

#include "platform/sound/mixer.h"

namespace audio {
namespace {

constexpr size_t kChunk = 1024;              // output frames that are converted at a stretch
constexpr size_t kBusRatio = 2;              // rates up to twice the output's share conversions
constexpr uint64_t kSecond = 1'000'000'000;  // ns

// Frames that a block may seem to begin before or behind the end of the last.
constexpr int64_t kRounding = 2;

constexpr int64_t kCacheLine = 64, kMostAhead = 8192;  // bytes

float* At(float* stereo, int64_t frame) {
    return stereo + 2 * static_cast<ptrdiff_t>(frame);
}

}  // namespace

void Mixer::MakeRoom() {
    const size_t out = kChunk + 2 * Filter::kOverrun;
    const size_t in = Filter::LongestNeed(m_rate, kChunk) + 2 * Filter::kOverrun;
    for (FloatTable* table : {&m_left, &m_right}) table->assign(in, 0.0f);
    for (FloatTable* table : {&m_out_left, &m_out_right, &m_scratch}) table->assign(out, 0.0f);
    const size_t shared = std::min(
        in, Filter::LongestNeed(kMaxRate / static_cast<int>(kBusRatio), kChunk) + 2 * Filter::kOverrun);
    for (Bus& bus : m_buses) {
        bus.left.assign(shared, 0.0f);
        bus.right.assign(shared, 0.0f);
    }
}

void Mixer::Callback(void* user, float* out, int frames, uint64_t time) {
    static_cast<Mixer*>(user)->Render(out, frames, time);
}

void Mixer::Render(float* out, int frames, uint64_t time) {
    // A virtual clock's blocks begin on whole frames, cut to nanoseconds; a device's lie anywhere between
    // two.
    const int64_t first = FrameAt(time + kSecond / (2 * static_cast<uint64_t>(m_rate)));
    const size_t due = Begin(first, frames);
    std::fill_n(out, 2 * static_cast<size_t>(frames), 0.0f);
    // What nobody has heard, while the device was being opened or stood still, is over all the same.
    // A block that seems to begin a little early or late makes no voice stop or jump.
    for (Voice* voice = m_sounding; voice != nullptr; voice = voice->next) {
        voice->done = voice->at - first;
        if (voice->done >= -kRounding && voice->done <= kRounding) voice->done = 0;
    }
    for (size_t i = 0; i < due; ++i) {
        const Order& order = m_due[i];
        Voice* voice = order.voice;
        int64_t at = order.frame - first;
        if (at < 0 && at >= -kRounding) at = 0;
        if (voice->listed)
            MixUntil(voice, out, at);
        else
            voice->done = at;
        CarryOut(order);
    }
    for (Voice* voice = m_sounding; voice != nullptr; voice = voice->next) {
        if (voice->next != nullptr) FetchAhead(*voice->next, frames);
        if (voice->done < 0) MixUntil(voice, out, 0);
        if (!MixShared(voice, frames)) MixUntil(voice, out, frames);
    }
    MixBuses(out, frames);
    if (m_mono) {
        for (float* x = out; x != At(out, frames); x += 2) x[0] = x[1] = (x[0] + x[1]) * 0.5f;
    }
    m_limiter.Run(out, static_cast<size_t>(frames));
    End(first, frames, due);
}

// Takes the orders that fall into the block and those that come late.
size_t Mixer::Begin(int64_t first, int frames) {
    const std::lock_guard<std::mutex> hold(m_lock);
    const int64_t end = first + frames;
    if (first + kRounding < m_taken) Rebase(first);
    m_mixing = true;
    m_taken = end;
    size_t due = 0;
    while (m_order_count > 0 && m_orders[m_first_order].frame < end) {
        const Order& order = m_orders[m_first_order];
        if (order.voice != nullptr) m_due[due++] = order;
        m_first_order = (m_first_order + 1) % m_orders.size();
        --m_order_count;
    }
    return due;
}

// Tells the callers how far each voice has come, unless an order waits that they know of already.
void Mixer::End(int64_t first, int frames, size_t due) {
    const std::lock_guard<std::mutex> hold(m_lock);
    for (size_t i = 0; i < due; ++i) --m_due[i].voice->waiting;
    for (Voice* voice = m_sounding; voice != nullptr;) {
        Voice* next = voice->next;
        voice->at = first + voice->done;
        if (voice->waiting == 0) {
            voice->told = voice->now;
            voice->since = voice->at;
        }
        if (!voice->now.playing) Unlist(voice);
        voice = next;
    }
    m_mixed = first + frames;
    m_mixing = false;
    if (m_block_waiters > 0) m_block_ended.notify_all();
}

// Brings what a voice will play in a block near the processor while the one before it is mixed. A walk
// through one sound the processor sees coming by itself, but with each block hundreds of them begin anew.
void Mixer::FetchAhead(const Voice& voice, int frames) {
    const int64_t needed = int64_t{frames} * voice.step.numerator / voice.step.denominator;
    const int64_t left = voice.frames - voice.now.place.frame;
    const int64_t bytes = std::min(std::min(needed, left) * voice.format.frame_bytes, kMostAhead);
    const unsigned char* from = voice.data + voice.now.place.frame * voice.format.frame_bytes;
    for (int64_t i = 0; i < bytes; i += kCacheLine) __builtin_prefetch(from + i);
    // A function that does nothing else counts as without effect, and calls of it are dropped.
    asm volatile("");
}

void Mixer::List(Voice* voice) {
    voice->listed = true;
    voice->previous = m_last_sounding;
    voice->next = nullptr;
    (m_last_sounding != nullptr ? m_last_sounding->next : m_sounding) = voice;
    m_last_sounding = voice;
}

void Mixer::Unlist(Voice* voice) {
    voice->listed = false;
    (voice->previous != nullptr ? voice->previous->next : m_sounding) = voice->next;
    (voice->next != nullptr ? voice->next->previous : m_last_sounding) = voice->previous;
    voice->previous = voice->next = nullptr;
}

// Mixes a voice from where this block has it up to `end`, if that is not behind; what lies before the block
// passes unheard.
void Mixer::MixUntil(Voice* voice, float* out, int64_t end) {
    Motion& now = voice->now;
    if (voice->done < 0) {
        const int64_t until = std::min<int64_t>(end, 0);
        now = Later(voice->frames, voice->step, now, until - voice->done);
        voice->done = std::max(voice->done, until);
    }
    while (now.playing && voice->done < end) {
        int64_t run = end - voice->done;
        // A filter reads across the loop's end by itself; copying stops there.
        if (!now.looping || voice->filter == nullptr)
            run = std::min(run, FramesUntil(now.place, voice->step, voice->frames));
        run = std::min<int64_t>(run, kChunk);
        if (voice->gain > 0) MixRun(*voice, At(out, voice->done), static_cast<size_t>(run));
        voice->done += run;
        now.place = Advance(now.place, voice->step, run);
        if (now.place.frame < voice->frames) continue;
        if (!now.looping) {
            now = {};
        } else {
            now.place.frame %= voice->frames;
            now.lapped = true;
        }
    }
    voice->done = std::max(voice->done, end);
}

// A voice that is converted and plays through the whole block adds itself to a bus. False: it is to be mixed
// by itself.
bool Mixer::MixShared(Voice* voice, int frames) {
    Motion& now = voice->now;
    const auto count = static_cast<size_t>(frames);
    if (voice->filter == nullptr || voice->done != 0 || !now.playing || voice->gain <= 0) return false;
    if (count > kChunk || voice->step.numerator > kBusRatio * voice->step.denominator) return false;
    if (!now.looping && FramesUntil(now.place, voice->step, voice->frames) <= frames) return false;
    Bus* bus = BusFor(*voice, count);
    if (bus == nullptr) return false;
    const Kernels& kernels = BestKernels();
    ReadAround(*voice, now.place.frame - voice->filter->Before(), bus->length);
    kernels.add_plane(m_left.data(), bus->left.data(), bus->length, voice->gain);
    if (bus->stereo) kernels.add_plane(m_right.data(), bus->right.data(), bus->length, voice->gain);
    now.place = Advance(now.place, voice->step, frames);
    if (now.place.frame >= voice->frames) {
        now.place.frame %= voice->frames;
        now.lapped = true;
    }
    voice->done = frames;
    return true;
}

Mixer::Bus* Mixer::BusFor(const Voice& voice, size_t frames) {
    const uint32_t fraction = voice.now.place.fraction;
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
    bus.length = bus.filter->Needed(fraction, voice.step, frames);
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
    const Place place = voice.now.place;
    if (voice.filter != nullptr) {
        const Filter& filter = *voice.filter;
        ReadAround(voice, place.frame - filter.Before(), filter.Needed(place.fraction, voice.step, frames));
        filter.Run(m_left.data(), place.fraction, voice.step, frames, m_out_left.data(), m_scratch.data());
        const float* right = m_out_left.data();
        if (voice.format.channels > 1) {
            filter.Run(m_right.data(), place.fraction, voice.step, frames, m_out_right.data(),
                       m_scratch.data());
            right = m_out_right.data();
        }
        return kernels.add_stereo(m_out_left.data(), right, acc, frames, voice.gain);
    }
    const unsigned char* source = voice.data + place.frame * voice.format.frame_bytes;
    const float gain16 = voice.gain * (1.0f / 32768);
    const bool is16 = voice.format.kind == SampleKind::kS16;
    if (is16 && voice.format.channels == 2) return kernels.add_stereo16(source, acc, frames, gain16);
    if (is16 && voice.format.channels == 1) return kernels.add_mono16(source, acc, frames, gain16);
    ReadFrames(voice.format, source, frames, m_left.data(), m_right.data());
    const float* right = voice.format.channels > 1 ? m_right.data() : m_left.data();
    kernels.add_stereo(m_left.data(), right, acc, frames, voice.gain);
}

// Reads frames from `first` on, which may lie before the beginning, with what is heard there: silence around
// a sound that plays once, and before a loop that has not come round yet.
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
