// Shared by targets that run the whole program.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/tempfolder.h"

namespace fuzz {

// A folder with small charts: two that play and one with only measure 0. Other names refer to no chart.
class Charts {
public:
    Charts() {
        std::string name = (std::filesystem::temp_directory_path() / "lumetra-fuzz-XXXXXX").string();
        if (!mkdtemp(name.data())) std::abort();
        folder_ = name;
        std::string wav(
            "RIFF\x28\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1f\0\0\x40\x1f\0\0\1\0\x8\0data\4\0\0\0abcd", 48);
        Write("a.wav", wav);
        Write("0.bms", "#TITLE a\r\n#BPM 600\r\n#WAV01 a.wav\r\n#00011:01\r\n#00111:0101\r\n");
        Write("1.bms", "#BPM 240\r\n#BMP01 no.bmp\r\n#00004:01\r\n#00301:01\r\n#00103:FF\r\n");
        Write("2.bms", "#00011:01\r\n");
    }
    ~Charts() {
        std::error_code error;
        std::filesystem::remove_all(folder_, error);
    }
    Charts(const Charts&) = delete;
    Charts& operator=(const Charts&) = delete;

    std::string Path(int choice) const { return folder_ + "/" + std::to_string(choice % 4) + ".bms"; }
    // On a command line, where `/` begins an option.
    std::string Word(int choice) const { return test::TempFolder::Backslashes(Path(choice)); }

private:
    void Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder_ + "/" + name, std::ios::binary) << bytes;
    }

    std::string folder_;
};

}  // namespace fuzz
