// package CHART: loads a chart with its sounds and pictures as the player does. Prints the time and the
// result.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include "chart/bms.h"
#include "display/ddraw.h"
#include "platform/sound/directsound.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: package CHART\n");
        return 2;
    }
    std::string path = argv[1];
    std::replace(path.begin(), path.end(), '/', '\\');  // the system's form of a name
    auto sound = std::make_unique<CDSound>();
    auto display = std::make_unique<CDDraw>();
    if (DirectSoundCreate(nullptr, &sound->m_pDS, nullptr) != DS_OK) return 1;
    auto chart = std::make_unique<CBMS>(display.get(), sound.get());
    const auto before = std::chrono::steady_clock::now();
    if (chart->Load(path.c_str(), 0) == 0) return 1;
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - before;
    int sounds = 0, pictures = 0;
    double bytes = 0;
    for (int i = 0; i < BMS_SLOTS; ++i) {
        if (sound->m_pSlot[i] && sound->m_pSlot[i]->GetDSBuffer()) {
            ++sounds;
            bytes += sound->m_pSlot[i]->m_nBufSize;
        }
        pictures += display->m_apDib[i] != nullptr;
    }
    std::printf("RESULT\twall_s\t%.6f\nRESULT\tsounds\t%d\nRESULT\tpictures\t%d\nRESULT\tpcm_bytes\t%.0f\n",
                took.count(), sounds, pictures, bytes);
    std::fflush(stdout);
    std::_Exit(0);
}
