// lumetra-render run as a user runs it, and what it writes.
#pragma once

#include <png.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "support/media.h"
#include "tools/run_tool.h"

namespace fs = std::filesystem;

inline std::vector<std::string> Lines(const std::string& text, const std::string& head) {
    std::vector<std::string> lines;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        if (text.compare(at, head.size(), head) == 0) lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

using Names = std::vector<std::string>;

class Render : public test::ToolTest {
protected:
    void SetUp() override {
        folder_.Write("song/song.bms",
                      "#PLAYER 1\r\n#TITLE T\r\n#BPM 120\r\n#WAV01 a.wav\r\n#BMP01 p.bmp\r\n"
                      "#00101:01\r\n#00111:0001\r\n#00104:01\r\n#00201:01\r\n#00316:02\r\n");
        folder_.Write("song/a.wav", test::SquareWav(4410, 50));
        folder_.Write("song/p.bmp", test::Bmp(8, 8, 0xFF8000u));
        fs::create_directory(folder_.Path("out"));
    }

    test::ToolResult Run(const std::string& arguments, const std::string& before = "") {
        return RunTool(LUMETRA_RENDER, folder_.Path("out"), arguments, before);
    }
    std::string Out(const std::string& name) { return test::ReadFile(folder_.Path("out/" + name)); }
    Names OutFiles() {
        Names names;
        for (const auto& entry : fs::directory_iterator(folder_.Path("out")))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
};

inline std::vector<int16_t> Samples(const std::string& wav) {
    std::vector<int16_t> samples((wav.size() - 44) / 2);
    std::memcpy(samples.data(), wav.data() + 44, samples.size() * 2);
    return samples;
}

struct Image {
    int width = 0, height = 0;
    std::vector<uint8_t> bgra;
    uint32_t At(int x, int y) const {
        const uint8_t* p = &bgra[static_cast<size_t>((y * width + x) * 4)];
        return static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[1]) << 8 | p[0];
    }
};

inline Image ReadPng(const std::string& bytes) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) return {};
    image.format = PNG_FORMAT_BGRA;
    std::vector<uint8_t> bgra(PNG_IMAGE_SIZE(image));
    png_image_finish_read(&image, nullptr, bgra.data(), 0, nullptr);
    return {static_cast<int>(image.width), static_cast<int>(image.height), bgra};
}
