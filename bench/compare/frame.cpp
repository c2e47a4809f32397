// Time to compose one frame of the player's size on its own surfaces: a background of 452 by 280, a picture
// of 256 by 256, a keyed picture on top of it of which about half shows, 60 sprites of 9 by 4 and 20 keyed
// bars of 62 by 4. Sprites and bars move from frame to frame. Prints the median of 9 batches.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "platform/graphics/directdraw.h"
#include "platform/graphics/gdi_object.h"

namespace {

constexpr int kWidth = 452, kHeight = 280, kLayer = 256, kSprites = 60, kBars = 20;
constexpr int kLayerX = 190, kLayerY = 12;
constexpr int kSpriteWidth = 9, kSpriteHeight = 4, kBarWidth = 62, kBarHeight = 4;

using Pixels = std::vector<uint32_t>;
std::mt19937 g_random(7);

int Below(int limit) {
    return static_cast<int>(g_random() % static_cast<unsigned>(limit));
}

// Colours other than the key.
Pixels Noise(int width, int height) {
    Pixels pixels(static_cast<size_t>(width) * height);
    for (uint32_t& pixel : pixels) pixel = (g_random() & 0xFFFFFF) | 0x010101;
    return pixels;
}

// Draws discs of noise on the key colour until half of the picture is covered.
Pixels Discs() {
    const Pixels noise = Noise(kLayer, kLayer);
    Pixels pixels(noise.size(), 0);
    size_t covered = 0;
    while (covered * 2 < pixels.size()) {
        const int x0 = Below(kLayer), y0 = Below(kLayer), radius = 12 + Below(40);
        for (int y = std::max(0, y0 - radius); y < std::min(kLayer, y0 + radius); ++y) {
            for (int x = std::max(0, x0 - radius); x < std::min(kLayer, x0 + radius); ++x) {
                const size_t at = static_cast<size_t>(y) * kLayer + x;
                if ((x - x0) * (x - x0) + (y - y0) * (y - y0) >= radius * radius || pixels[at]) continue;
                pixels[at] = noise[at];
                ++covered;
            }
        }
    }
    return pixels;
}

Pixels Bar() {
    Pixels pixels(kBarWidth * kBarHeight, 0x40C0F0);
    for (int y = 0; y < kBarHeight; ++y)
        for (int x = 14; x < kBarWidth; x += 16)
            pixels[y * kBarWidth + x] = pixels[y * kBarWidth + x + 1] = 0;
    return pixels;
}

IDirectDrawSurface7* MakeSurface(IDirectDraw7* dd, int width, int height, const Pixels& pixels) {
    DDSURFACEDESC2 desc = {};
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
    desc.ddsCaps.dwCaps = DDSCAPS_OFFSCREENPLAIN;
    desc.dwWidth = static_cast<DWORD>(width);
    desc.dwHeight = static_cast<DWORD>(height);
    IDirectDrawSurface7* surface = nullptr;
    HDC dc = nullptr;
    if (dd->CreateSurface(&desc, &surface, nullptr) < 0 || surface->GetDC(&dc) < 0) std::exit(1);
    for (int y = 0; y < height && !pixels.empty(); ++y)
        std::copy_n(&pixels[static_cast<size_t>(y) * width], width, dc->view.pPixels + y * dc->view.nStride);
    surface->ReleaseDC(dc);
    const DDCOLORKEY black = {0, 0};
    surface->SetColorKey(DDCKEY_SRCBLT, &black);
    return surface;
}

struct Place {
    int x, y, column, row;
};

struct Scene {
    IDirectDrawSurface7 *back, *skin, *base, *overlay, *sheet, *bar;
    std::vector<Place> sprites, bars;
};

Scene MakeScene(IDirectDraw7* dd) {
    Scene scene = {};
    scene.back = MakeSurface(dd, kWidth, kHeight, {});
    scene.skin = MakeSurface(dd, kWidth, kHeight, Noise(kWidth, kHeight));
    scene.base = MakeSurface(dd, kLayer, kLayer, Noise(kLayer, kLayer));
    scene.overlay = MakeSurface(dd, kLayer, kLayer, Discs());
    scene.sheet =
        MakeSurface(dd, kSpriteWidth * 8, kSpriteHeight * 4, Noise(kSpriteWidth * 8, kSpriteHeight * 4));
    scene.bar = MakeSurface(dd, kBarWidth, kBarHeight, Bar());
    for (int i = 0; i < kSprites; ++i)
        scene.sprites.push_back({8 + 10 * Below(16), Below(kHeight - 4), Below(8), Below(4)});
    for (int i = 0; i < kBars; ++i) scene.bars.push_back({8 + 80 * Below(2), Below(kHeight - 4), 0, 0});
    return scene;
}

DWORD Moved(int y, unsigned frame) {
    return (static_cast<unsigned>(y) + frame * 3) % (kHeight - 4);
}

void Compose(const Scene& scene, unsigned frame) {
    const DWORD plain = DDBLTFAST_WAIT, keyed = DDBLTFAST_WAIT | DDBLTFAST_SRCCOLORKEY;
    HRESULT worst = scene.back->BltFast(0, 0, scene.skin, nullptr, plain);
    worst |= scene.back->BltFast(kLayerX, kLayerY, scene.base, nullptr, plain);
    worst |= scene.back->BltFast(kLayerX, kLayerY, scene.overlay, nullptr, keyed);
    for (const Place& place : scene.sprites) {
        const LONG left = place.column * kSpriteWidth, top = place.row * kSpriteHeight;
        const RECT rect = {left, top, left + kSpriteWidth, top + kSpriteHeight};
        worst |= scene.back->BltFast(static_cast<DWORD>(place.x), Moved(place.y, frame), scene.sheet, &rect,
                                     plain);
    }
    for (const Place& place : scene.bars)
        worst |= scene.back->BltFast(static_cast<DWORD>(place.x), Moved(place.y, frame), scene.bar, nullptr,
                                     keyed);
    if (worst != DD_OK) std::exit(1);
}

double TimeFrames(const Scene& scene, unsigned first, unsigned count) {
    const auto start = std::chrono::steady_clock::now();
    for (unsigned i = 0; i < count; ++i) Compose(scene, first + i);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main() {
    IDirectDraw7* dd = nullptr;
    if (DirectDrawCreateEx(nullptr, &dd, IID_IDirectDraw7, nullptr) != DD_OK) return 1;
    dd->SetCooperativeLevel(nullptr, DDSCL_NORMAL);
    const Scene scene = MakeScene(dd);
    TimeFrames(scene, 0, 200);
    unsigned count = 64;
    while (TimeFrames(scene, 0, count) < 0.04) count *= 2;
    std::vector<double> seconds;
    for (int i = 0; i < 9; ++i) seconds.push_back(TimeFrames(scene, static_cast<unsigned>(i) * count, count));
    std::nth_element(seconds.begin(), seconds.begin() + 4, seconds.end());
    std::printf("RESULT\tus_per_frame\t%.6g\n", seconds[4] * 1e6 / count);
    return 0;
}
