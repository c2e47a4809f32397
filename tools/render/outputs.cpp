#include "render/outputs.h"

#include <cstdio>
#include <filesystem>
#include <string_view>

#include "chart/bms.h"
#include "common/output.h"
#include "common/output_rules.h"
#include "platform/ascii.h"
#include "platform/files/files.h"
#include "platform/files/lookup.h"
#include "platform/substitutes/substitute.h"
#include "render/audio_file.h"
#include "render/strip.h"
#include "system/globals.h"

namespace render {
namespace {

// Of what substitutes for the name: by its ending, or else by the line.
MediaKind KindOfLine(std::string_view line, std::string_view name) {
    const MediaKind kind = KindOfName(name);
    if (kind == MediaKind::kNone && AsciiEqual(line.substr(0, 4), "#WAV")) return MediaKind::kSound;
    return kind == MediaKind::kNone && AsciiEqual(line.substr(0, 4), "#BMP") ? MediaKind::kPicture : kind;
}

// Also files of header lines such as #STAGEFILE, which the player does not open. A preview is what renderers
// write. Every file that may substitute for a name is protected: to know which one does takes decoding it.
void ProtectLines(const std::string& chart, tools::OutputRules* rules) {
    std::vector<uint8_t> bytes;
    std::string why;
    if (!tools::ReadFile(chart, BMS_FILE_LIMIT, &bytes, &why)) return;
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const std::string folder = chart.substr(0, chart.rfind('/') + 1);
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find_first_of("\r\n", at), text.size());
        const std::string_view line = text.substr(at, end - at);
        at = end + 1;
        const size_t blank = line.find_first_of(" \t"), name = line.find_first_not_of(" \t", blank);
        if (line.empty() || line[0] != '#' || name == line.npos || line.substr(0, 8) == "#PREVIEW") continue;
        const std::string_view rest = line.substr(name, line.find_last_not_of(" \t") + 1 - name);
        const std::string path = folder + std::string(rest), found = FindNamed(path);
        rules->Protect(found);
        if (!found.empty()) continue;
        for (const std::string& other : SubstitutePaths(path, KindOfLine(line, rest))) rules->Protect(other);
    }
}

void ProtectInputs(const std::string& chart, tools::OutputRules* rules) {
    for (const auto* names : {&g_pBMS->m_aszWav, &g_pBMS->m_aszBmp}) {
        for (const char* name : *names) {
            if (name[0]) rules->Protect(FileFind(name));
        }
    }
    ProtectNamed(chart, rules);
}

}  // namespace

void ProtectNamed(const std::string& chart, tools::OutputRules* rules) {
    const std::string found = FileFind(chart.c_str());
    for (const std::string& name : {chart, found}) rules->Protect(name);
    ProtectLines(found, rules);
}

std::string PictureName(const Options& options, size_t index) {
    char number[24];
    std::snprintf(number, sizeof number, "%04zu_", index + 1);
    const std::string name = number + options.places[index].text + ".png";
    return (std::filesystem::path(options.png_folder) / name).string();
}

ExitCode CheckOutputs(const Options& options) {
    using tools::FileKind;
    tools::OutputRules rules(options.force);
    ProtectInputs(options.chart, &rules);
    std::string why;
    FileKind audio = FileKind::kOgg;
    AudioKind(options.audio, &audio);
    const auto allow = [&](const std::string& name, FileKind kind) {
        return name.empty() || rules.Allow(name, kind, &why);
    };
    bool allowed = allow(options.wav, FileKind::kWav) && allow(options.trace, FileKind::kTrace) &&
                   allow(options.video, FileKind::kVideo) && allow(options.audio, audio);
    for (size_t i = 0; allowed && i < options.places.size(); ++i)
        allowed = allow(PictureName(options, i), FileKind::kPng);
    if (!options.strip.empty()) {
        for (const std::string& name : StripNames(options)) allowed = allowed && allow(name, FileKind::kPng);
    }
    return allowed ? kGood : Complain(kUsage, why);
}

}  // namespace render
