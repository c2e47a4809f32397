// Benchmarks the display: a picture event, loading a chart's pictures, and a frame with its blit to the
// window.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "display/ddraw.h"
#include "display/dib.h"
#include "platform/graphics/gdi.h"
#include "platform/timer.h"
#include "platform/window/window.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "shell/shell.h"

namespace {

constexpr int kPictures = 575, kSide = 256;

void Put(std::string* out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out->push_back(static_cast<char>(value >> (8 * i)));
}

std::string Picture(int bits) {
    std::string out = "BM";
    for (int i = 0; i < 3; ++i) Put(&out, 0, 4);
    for (uint32_t value : {40, kSide, kSide, 1 | bits << 16, 0, 0, 0, 0, 0, 0}) Put(&out, value, 4);
    if (bits <= 8) out.append(size_t{4} << bits, 'p');
    for (int i = 0; i < kSide * kSide * bits / 8; ++i) out.push_back(static_cast<char>(i * 7 + i / 251));
    return out;
}

// A folder of pictures, removed at the end.
struct Folder {
    std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("lumetra-bench-" + std::to_string(getpid()));
    Folder() { std::filesystem::create_directories(path); }
    ~Folder() { std::filesystem::remove_all(path); }
    std::string Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(path / name, std::ios::binary) << bytes;
        return (path / name).string();
    }
};

void Prepare(CDDraw* display, HWND window) {
    if (display->Init(window, 0, 0, SCREEN_WIDTH, SCREEN_HEIGHT)) std::abort();
    for (int layer : {LAYER_BGA, LAYER_POOR, LAYER_OVERLAY}) {
        display->CreateParts(layer, LAYER_SIZE, LAYER_SIZE);
        display->ClearParts(layer, 0);
    }
    for (const auto& [id, part, width, height] :
         {std::tuple{BITMAP_SPRITES, PARTS_SPRITES, SPRITES_WIDTH, SPRITES_HEIGHT},
          {BITMAP_SKIN, PARTS_SKIN, SCREEN_WIDTH, SCREEN_HEIGHT}}) {
        const HBITMAP bitmap = LoadBitmapA(GetProgramModule(), id);
        display->CreateParts(part, width, height);
        display->LoadParts(bitmap, width, height, part);
        DeleteObject(bitmap);
    }
}

void FirePicture(benchmark::State& state) {
    const Folder folder;
    CDDraw display;
    Prepare(&display, nullptr);
    if (display.LoadDib(folder.Write("a.bmp", Picture(static_cast<int>(state.range(0)))).c_str(), 1))
        std::abort();
    g_pDDraw = &display;
    BmsEvent event = {};
    event.nChannel = LAYER_BGA;
    event.pObject = display.m_apDib[1];
    for (auto _ : state) FireBga(&event);
    g_pDDraw = nullptr;
}
BENCHMARK(FirePicture)
    ->ArgName("bits")
    ->Arg(1)
    ->Arg(4)
    ->Arg(8)
    ->Arg(16)
    ->Arg(24)
    ->Arg(32)
    ->Unit(benchmark::kMicrosecond);

void LoadPictures(benchmark::State& state) {
    const Folder folder;
    const std::string bytes = Picture(static_cast<int>(state.range(0)));
    std::vector<std::string> names;
    for (int i = 1; i <= kPictures; ++i)
        names.push_back(folder.Write("p" + std::to_string(i) + ".bmp", bytes));
    for (auto _ : state) {
        CDDraw display;
        for (int i = 1; i <= kPictures; ++i)
            if (display.LoadDib(names[static_cast<size_t>(i - 1)].c_str(), i)) std::abort();
    }
    state.SetBytesProcessed(state.iterations() * kPictures * static_cast<int64_t>(bytes.size()));
}
BENCHMARK(LoadPictures)->ArgName("bits")->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);

HWND OpenWindow() {
    WNDCLASSEXA window = {};
    window.cbSize = 48;
    window.lpfnWndProc = DefWindowProcA;
    window.lpszClassName = "bench";
    RegisterClassExA(&window);
    return CreateWindowExA(WS_EX_TOPMOST, "bench", "", WS_VISIBLE, 100, 100, SCREEN_WIDTH, SCREEN_HEIGHT,
                           nullptr, nullptr, nullptr, nullptr);
}

// Skin, both layers, 60 marks and 8 bars, then Present without its sleep.
void FrameWithPresent(benchmark::State& state) {
    const HWND window = OpenWindow();
    CDDraw display;
    Prepare(&display, window);
    int frame = 0;
    for (auto _ : state) {
        ++frame;
        display.BltBack(0, 0, nullptr, PARTS_SKIN);
        for (int i = 0; i < 8; ++i)
            display.BltBackKey(BAR_LEFT_X, 1 + (frame + i * 32) % 269, &SPRITE_BAR, PARTS_SPRITES);
        for (int i = 0; i < 60; ++i)
            display.BltBack(28 + i % 8, 1 + (frame + i * 7) % 269, &SPRITE_NOTE_WHITE, PARTS_SPRITES);
        display.BltBack(LAYER_X, LAYER_Y, nullptr, LAYER_BGA);
        display.BltBackKey(LAYER_X, LAYER_Y, nullptr, LAYER_OVERLAY);
        display.m_dwLastPresent = timeGetTime() - 1000;
        if (display.Present()) std::abort();
    }
    DestroyWindow(window);
}
BENCHMARK(FrameWithPresent)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
