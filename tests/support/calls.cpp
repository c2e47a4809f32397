#include "support/calls.h"

#include <array>
#include <cstring>
#include <numeric>
#include <set>

namespace {

constexpr auto kKinds = static_cast<size_t>(PlatformCall::kCount);

struct Ordered {
    int64_t result = 0;
    int skip = 0, times = 0;
};

std::array<Ordered, kKinds> g_orders;
std::array<int, kKinds> g_calls;
std::set<const void*> g_lost;
CallHook g_next;
int g_surfaces, g_buffers;

void CountLive(const CallFacts& call) {
    switch (call.eCall) {
        case PlatformCall::kDirectDrawCreate:
        case PlatformCall::kCreatePrimary:
        case PlatformCall::kCreateSurface:
            ++g_surfaces;
            break;
        case PlatformCall::kDirectDrawRelease:
        case PlatformCall::kSurfaceRelease:
            --g_surfaces;
            break;
        case PlatformCall::kCreateSoundBuffer:
            ++g_buffers;
            break;
        case PlatformCall::kBufferRelease:
            --g_buffers;
            break;
        default:
            break;
    }
}

bool IsLost(const CallFacts& call) {
    if (call.eCall == PlatformCall::kRestore || call.eCall == PlatformCall::kBufferRelease)
        g_lost.erase(call.pObject);
    return (call.eCall == PlatformCall::kLock || call.eCall == PlatformCall::kPlay) &&
           g_lost.count(call.pObject) != 0;
}

bool OnCall(const CallFacts& call, int64_t* result) {
    const auto kind = static_cast<size_t>(call.eCall);
    ++g_calls[kind];
    Ordered& order = g_orders[kind];
    if (order.times > 0 && order.skip-- <= 0) {
        --order.times;
        *result = order.result;
        return true;
    }
    if (IsLost(call)) {
        *result = DSERR_BUFFERLOST;
        return true;
    }
    if (g_next && g_next(call, result)) return true;
    CountLive(call);
    return false;
}

const bool g_installed = [] {
    g_pfnCallHook = OnCall;
    return true;
}();

}  // namespace

namespace test {

void Order(PlatformCall call, int64_t result, int skip, int times) {
    g_orders[static_cast<size_t>(call)] = {result, skip, times};
}

void Lose(IDirectSoundBuffer* buffer) {
    buffer->Stop();
    void* part = nullptr;
    DWORD bytes = 0;
    buffer->Lock(0, 1, &part, &bytes, nullptr, nullptr, DSBLOCK_ENTIREBUFFER);
    std::memset(part, 0, bytes);
    buffer->Unlock(part, bytes, nullptr, 0);
    g_lost.insert(buffer);
}

int Calls(PlatformCall call) {
    return g_calls[static_cast<size_t>(call)];
}

int Calls() {
    return std::accumulate(g_calls.begin(), g_calls.end(), 0);
}

void ForgetCalls() {
    g_orders = {};
    g_calls = {};
    g_lost.clear();
    g_next = nullptr;
}

void ThenAsk(CallHook hook) {
    g_next = hook;
}

int LiveSurfaces() {
    return g_surfaces;
}

int LiveBuffers() {
    return g_buffers;
}

PixelView Pixels(IDirectDrawSurface7* surface) {
    HDC context = nullptr;
    if (surface->GetDC(&context) != DD_OK) return {};
    const PixelView view = context->view;
    surface->ReleaseDC(context);
    return view;
}

uint32_t PixelAt(IDirectDrawSurface7* surface, int x, int y) {
    const PixelView view = Pixels(surface);
    return view.pPixels[static_cast<size_t>(y) * view.nStride + static_cast<size_t>(x)];
}

}  // namespace test
