#include "platform/sound/directsound_test.h"

#include <array>

#include "platform/sound/directsound_internal.h"

namespace {

struct FailureOrder {
    HRESULT result = DS_OK;
    int skip = 0, times = 0;
};

std::array<FailureOrder, static_cast<size_t>(directsound_test::Call::kCount)> g_failures;
std::array<int, static_cast<size_t>(directsound_test::Call::kCount)> g_calls;
int g_buffers = 0;

}  // namespace

HRESULT directsound::Ordered(directsound_test::Call call) {
    ++g_calls[static_cast<size_t>(call)];
    FailureOrder& order = g_failures[static_cast<size_t>(call)];
    if (order.times == 0) return DS_OK;
    if (order.skip > 0) {
        --order.skip;
        return DS_OK;
    }
    --order.times;
    return order.result;
}

void directsound::CountBuffer(int change) {
    g_buffers += change;
}

namespace directsound_test {

void FailNext(Call call, HRESULT result, int skip, int times) {
    g_failures[static_cast<size_t>(call)] = {result, skip, times};
}

void FailNothing() {
    g_failures = {};
}

int Calls(Call call) {
    return g_calls[static_cast<size_t>(call)];
}

void Lose(IDirectSoundBuffer* pBuffer) {
    IDirectSoundBuffer::State& state = *pBuffer->m_pState;
    state.lost = true;
    if (state.primary) return;
    directsound::TheMixer().Stop(&state.voice);
    state.memory.zeroed = false;
    directsound::Silence(state.memory, state.voice.format);
}

int LiveBuffers() {
    return g_buffers;
}

size_t SampleBytes() {
    return audio::SampleBytesInUse();
}

}  // namespace directsound_test
