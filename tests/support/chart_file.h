// Charts for tests, by way of a file.
#pragma once

#include <memory>
#include <string>

#include "chart/bms.h"
#include "support/tempfolder.h"

// A chart file in a folder of its own, gone with the object.
class ChartFile {
public:
    explicit ChartFile(const std::string& bytes) { folder_.Write("chart.bms", bytes); }

    std::string Folder() const {  // as the system spells it, with its closing backslash
        return test::TempFolder::Backslashes(folder_.Path() + "/");
    }
    std::string Path() const { return Folder() + "chart.bms"; }

private:
    test::TempFolder folder_;
};

// Puts a CR LF behind each line of the text.
inline std::string Lines(const std::string& text) {
    std::string crlf;
    for (char c : text) crlf += c == '\n' ? "\r\n" : std::string(1, c);
    return crlf;
}

// A chart read from the bytes; null when it is refused.
inline std::unique_ptr<CBMS> LoadChart(const std::string& bytes, CDDraw* display = nullptr,
                                       CDSound* sound = nullptr) {
    const ChartFile file(bytes);
    auto chart = std::make_unique<CBMS>(display, sound);
    return chart->Load(file.Path().c_str(), 0) != 0 ? std::move(chart) : nullptr;
}

// The same for lines that end in LF, and compiled; null when that fails.
inline std::unique_ptr<CBMS> CompileChart(const std::string& text, CDDraw* display = nullptr,
                                          CDSound* sound = nullptr) {
    auto chart = LoadChart(Lines(text), display, sound);
    return chart && chart->Compile() == 0 ? std::move(chart) : nullptr;
}
