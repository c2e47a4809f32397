#include "common/output_rules.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace tools {
namespace {

using std::string_view_literals::operator""sv;

struct KindInfo {
    const char* name;
    std::initializer_list<const char*> suffixes;
};

constexpr const char* kOfOtherKinds[] = {".mp3", ".m4a", ".aac", ".opus", ".wma", ".aif", ".aiff", ".au",
                                         ".bms", ".bme", ".bml", ".pms",  ".bmp", ".jpg", ".jpeg", ".gif"};

const KindInfo& InfoOf(FileKind kind) {
    static const KindInfo kinds[] = {
        // in the order of FileKind
        {"a WAV file", {".wav", ".wave"}},
        {"a FLAC file", {".flac"}},
        {"an Ogg file", {".ogg", ".oga"}},
        {"an XA file", {".xa", ".wav"}},  // charts name XA sounds like any other
        {"a PNG picture", {".png"}},
        {"a video",
         {".mp4", ".m4v", ".mov", ".mkv", ".webm", ".avi", ".flv", ".ts", ".mpg", ".mpeg", ".ogv", ".nut"}},
        {"a trace", {".txt", ".trace", ".log"}},
    };
    return kinds[static_cast<size_t>(kind)];
}

bool HasSuffix(FileKind kind, const std::string& suffix) {
    const auto& own = InfoOf(kind).suffixes;
    return std::find(own.begin(), own.end(), suffix) != own.end();
}

// Whether a suffix means another kind of file. Unknown ones and none mean nothing.
bool MeansAnotherKind(FileKind kind, const std::string& suffix) {
    if (HasSuffix(kind, suffix)) return false;
    for (int other = 0; other <= static_cast<int>(FileKind::kTrace); ++other) {
        if (HasSuffix(static_cast<FileKind>(other), suffix)) return true;
    }
    return std::find(std::begin(kOfOtherKinds), std::end(kOfOtherKinds), suffix) != std::end(kOfOtherKinds);
}

bool IsVideo(std::string_view head) {
    const auto has = [head](size_t at, std::string_view bytes) {
        return head.substr(at, bytes.size()) == bytes;
    };
    return has(4, "ftyp"sv) || has(4, "moov"sv) || has(0, "\x1A\x45\xDF\xA3"sv) || has(8, "AVI "sv) ||
           has(0, "FLV\1"sv) || has(0, "\0\0\1\xBA"sv) || has(0, "\0\0\1\xB3"sv) || has(0, "OggS"sv) ||
           has(0, "nut/"sv) || has(0, "\x30\x26\xB2\x75"sv) || (has(0, "G"sv) && has(188, "G"sv));
}

bool HasContentOf(FileKind kind, std::string_view head) {
    const auto begins = [head](std::string_view bytes) { return head.substr(0, bytes.size()) == bytes; };
    switch (kind) {
        case FileKind::kWav:
            return (begins("RIFF") || begins("RF64")) && head.size() >= 12 && head.substr(8, 4) == "WAVE";
        case FileKind::kFlac:
            return begins("fLaC");
        case FileKind::kOgg:
            return begins("OggS");
        case FileKind::kXa:
            return begins("KWD1");
        case FileKind::kPng:
            return begins("\x89PNG\r\n\x1A\n");
        case FileKind::kVideo:
            return head.size() > 188 && IsVideo(head);
        case FileKind::kTrace:
            return begins("frame 0 ");
    }
    return false;
}

bool IsEmptyOr(FileKind kind, const std::string& path) {
    char head[256];
    std::ifstream file(path, std::ios::binary);
    file.read(head, sizeof head);
    return file.gcount() == 0 || HasContentOf(kind, {head, static_cast<size_t>(file.gcount())});
}

}  // namespace

void OutputRules::Protect(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0) inputs_.insert({status.st_dev, status.st_ino});
}

bool OutputRules::Allow(const std::string& name, FileKind kind, std::string* why) {
    const bool standard = name == "-";
    const auto refuse = [&](const std::string& text) {
        *why = (standard ? "standard output" : name) + ": " + text;
        return false;
    };
    struct stat status = {};
    const bool exists = (standard ? fstat(STDOUT_FILENO, &status) : stat(name.c_str(), &status)) == 0;
    if (exists && inputs_.count({status.st_dev, status.st_ino}))
        return refuse("is an input and is never overwritten");
    if (standard || (exists && !S_ISREG(status.st_mode))) return true;
    const std::string suffix = SuffixOf(name), what = InfoOf(kind).name;
    if (MeansAnotherKind(kind, suffix)) return refuse(what + " is not named " + suffix);
    if (!outputs_.insert(FollowLinks(name)).second) return refuse("is named for two outputs");
    if (exists && !force_ && !IsEmptyOr(kind, name))
        return refuse("exists and is not " + what + "; --force replaces it");
    return true;
}

std::string FollowLinks(const std::string& name) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path path = fs::absolute(name, error);
    for (int links = 0; links < 40 && fs::is_symlink(path, error); ++links) {
        const fs::path to = fs::read_symlink(path, error);
        path = to.is_absolute() ? to : path.parent_path() / to;
    }
    const fs::path folder = fs::canonical(path.parent_path(), error);
    return (error ? path : folder / path.filename()).string();
}

std::string SuffixOf(const std::string& name) {
    std::string suffix = std::filesystem::path(name).extension().string();
    for (char& c : suffix) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    return suffix;
}

}  // namespace tools
