// Takes any bytes as a BMP file: loads it, shows it whole, and through a picture definition made from its
// last 24 bytes.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "display/ddraw.h"
#include "display/dib.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "shell/shell.h"

namespace {

struct PictureFile {
    std::string path =
        (std::filesystem::temp_directory_path() / ("lumetra-bmp-" + std::to_string(getpid()))).string();
    ~PictureFile() { std::filesystem::remove(path); }
    void Write(const uint8_t* data, size_t size) const {
        std::filesystem::remove(path);
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
};

void Fire(int32_t channel, void* object) {
    BmsEvent event = {};
    event.nChannel = channel;
    event.pObject = object;
    FireBga(&event);
}

CDDraw* Display() {
    static CDDraw display;
    static const bool ready = !display.Init(nullptr, 0, 0, SCREEN_WIDTH, SCREEN_HEIGHT) &&
                              !display.CreateParts(LAYER_BGA, LAYER_SIZE, LAYER_SIZE);
    if (!ready) std::abort();
    return &display;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const PictureFile file;
    file.Write(data, size);
    CDDraw* before = g_pDDraw;
    g_pDDraw = Display();
    if (g_pDDraw->LoadDib(file.path.c_str(), 1) == 0) {
        Fire(LAYER_BGA, g_pDDraw->m_apDib[1]);
        BgaDef def = {};
        std::memcpy(&def, data + size - 24, 24);
        def.nBmp = 1;
        Fire(BGADEF_CHANNEL_BASE + LAYER_BGA, &def);
    } else if (g_pDDraw->m_apDib[1]) {
        std::abort();
    }
    g_pDDraw->FreeDib(1);
    g_pDDraw = before;
    return 0;
}
