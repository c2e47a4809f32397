#include "check/files.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "platform/ascii.h"
#include "platform/files/lookup.h"
#include "platform/files/pathmatch.h"

namespace check {
namespace {

// The last dot of the last part and what follows it.
std::string EndingOf(const std::string& path) {
    const size_t dot = path.rfind('.'), part = path.find_last_of("/\\");
    return dot == path.npos || (part != path.npos && dot < part) ? "" : path.substr(dot);
}

// The last parts of a path of this machine.
std::string Tail(const std::string& path, size_t parts) {
    size_t at = path.size();
    while (parts-- > 0 && at != 0 && at != path.npos) at = path.rfind('/', at - 1);
    return at == path.npos || at >= path.size() ? path : path.substr(path[at] == '/' ? at + 1 : at);
}

bool Exists(const std::string& path) {
    const auto there = [](const std::string& candidate, void*) {
        struct stat info;
        return stat(candidate.c_str(), &info) == 0;
    };
    return MatchPath(path, there, nullptr);
}

// Whether the player reads the file as it is, by its first bytes.
bool IsOwnKind(const std::string& path) {
    const char* kind = KindOf(path);
    const auto is = [kind](const char* own) { return kind && std::strcmp(kind, own) == 0; };
    return is(kWavFile) || is(kXaFile) || is(kBmpFile);
}

// Which similar file exists, or what is odd about the name. Begins with "; " or is empty.
std::string HintAboutMissing(const Definition& definition, MediaKind kind) {
    const std::string& name = definition.name;
    if (!name.empty() && name.back() == ' ') return "; the name ends with a blank";
    if (!name.empty() && name.front() == ' ') return "; the name begins with a blank";
    if (name.find('"') != name.npos) return "; the quotes count as part of the name";
    if (name.size() > 2 && (name[1] == ':' || name[0] == '\\' || name[0] == '/'))
        return "; the player puts the chart's folder before every name, even an absolute one";
    const size_t dot = name.rfind('.');
    const std::string stem = name.substr(0, dot);
    const size_t left = definition.path.size() - (name.size() - stem.size());
    if (definition.path.size() < name.size()) return "";
    // The player has already tried these substitutes.
    for (const std::string& other : SubstitutePaths(definition.path, kind)) {
        if (!FindNamed(other).empty())
            return "; " + Quote(stem + EndingOf(other)) + " exists but cannot be read";
    }
    for (const char* ending : {".xa", ".mpg", ".avi", ".mp4"}) {
        if (!FindNamed(definition.path.substr(0, left) + ending).empty())
            return "; " + Quote(stem + ending) + " exists";
    }
    return "";
}

}  // namespace

// The name as the disk has it where only letter case, separators and the ending differ, so that the chart's
// encoding does not matter; empty if that is not so, or if the player would not find the same file by it.
static std::string NameOnDisk(const Definition& definition, const std::string& found) {
    const std::string &name = definition.name, ending = EndingOf(found);
    const auto control = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
    if (std::any_of(name.begin(), name.end(), control)) return "";  // lines that a lone CR or LF joins
    const size_t stem = name.size() - EndingOf(name).size(), size = stem + ending.size();
    if (found.size() <= size || found[found.size() - size - 1] != '/') return "";
    const std::string disk = found.substr(found.size() - size);
    for (size_t i = 0; i < stem; ++i) {
        const bool trail = i > 0 && static_cast<unsigned char>(name[i - 1]) >= 0x80;  // it may be no letter
        const bool same = name[i] == disk[i] || (name[i] == '\\' && disk[i] == '/') ||
                          (!trail && AsciiUpper(name[i]) == AsciiUpper(disk[i]));
        if (!same) return "";
    }
    if (!definition.path.ends_with(name)) return "";  // cut
    const std::string path = definition.path.substr(0, definition.path.size() - name.size()) + disk;
    return path.size() < BMS_PATH && FindNamed(path) == found ? disk : "";
}

// Whether a substitute is also read under its own name. A film stays what the chart asks for.
static bool IsReadUnder(const std::string& disk, const Definition& definition, const std::string& found,
                        MediaKind kind) {
    if (IsFilmName(definition.name)) return false;
    if (IsOwnKind(found)) return true;
    BYTE head[kForeignHead];
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(found.c_str(), "rb"), std::fclose);
    return file && ForeignKind(head, std::fread(head, 1, sizeof head, file.get()), disk) == kind;
}

void CheckSpelling(Spelling spelling, const Definition& definition, const std::string& found, MediaKind media,
                   Findings* findings) {
    struct Kind {
        Code code;
        const char* effect;
    };
    static constexpr Kind kKinds[] = {
        {"name-separator", "; players that take a backslash as part of a name do not find it"},
        {"name-case", ", in another letter case; players that need the exact name do not find it"},
        {"name-encoding", ", in another encoding; players that need the exact name do not find it"},
        {"stand-in", ", which substitutes for it; only some players do this"}};
    const std::string& name = definition.name;
    const std::string disk = NameOnDisk(definition, found);
    if (spelling == Spelling::kSame && (disk.empty() || disk == name)) return;
    const Kind& kind = kKinds[static_cast<int>(spelling)];
    const std::string& shown = spelling == Spelling::kSame ? disk : found.substr(found.rfind('/') + 1);
    findings->Add(definition.NamePlace(), kind.code,
                  [&] { return Quote(name) + " is found as " + Quote(shown) + kind.effect; });
    const bool safe = spelling != Spelling::kSubstitute || IsReadUnder(disk, definition, found, media);
    if (!disk.empty() && safe) findings->Propose(definition.NamePlace(), kind.code, name, disk);
}

Spelling CompareSpelling(const std::string& name, const std::string& found) {
    if (!AsciiEqual(EndingOf(name), EndingOf(found))) return Spelling::kSubstitute;
    bool same_but_case = false;
    for (PathParts cut : CutPath(name)) {
        cut.bAbsolute = false;
        const std::string spelled = JoinPath(cut), tail = Tail(found, cut.parts.size());
        if (spelled == tail) return Spelling::kSame;
        same_but_case = same_but_case || AsciiEqual(spelled, tail);
    }
    return same_but_case ? Spelling::kCase : Spelling::kEncoding;
}

std::string FindOpened(const std::string& path, MediaKind kind, bool loaded) {
    const std::string named = FindNamed(path);
    if (!named.empty()) return named;
    const std::vector<std::string> others = SubstitutePaths(path, kind);
    if (others.size() == 1 && loaded) return others[0];
    // Decoding again takes long, but several files can substitute for the name and some may be damaged.
    if (loaded) return MakeSubstitute(others, kind, {}).path;
    const auto own = std::find_if(others.begin(), others.end(), IsOwnKind);
    return own != others.end() ? *own : "";
}

bool IsConverted(const std::string& found) {
    return !IsOwnKind(found);
}

std::string WhyMissing(const Definition& definition, MediaKind kind) {
    if (Exists(definition.path)) return " exists but is not a readable file";
    return " does not exist" + HintAboutMissing(definition, kind);
}

std::string HintAboutKind(const std::string& name, MediaKind kind) {
    const bool sound = kind == MediaKind::kSound;
    const std::string ending = EndingOf(name), own = sound ? ".wav" : ".bmp";
    const std::string save = sound ? "save it as a PCM WAV file" : "save it as a BMP file";
    const bool substitutes = KindOfName(name) == kind && !AsciiEqual(ending, ".xa");
    if (AsciiEqual(ending, own) || !substitutes) return "; " + save;
    const std::string meant = name.substr(0, name.size() - ending.size()) + own;
    return "; write " + Quote(meant) + " in the chart and this file substitutes for it, or " + save;
}

const char* KindOf(const std::string& path) {
    char head[16] = {};
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    const size_t size = file ? std::fread(head, 1, sizeof head, file.get()) : 0;
    if (file && size == 0) return "an empty file";
    struct Magic {
        int at;
        const char* bytes;
        size_t count;
        const char* kind;
    };
    static constexpr Magic kMagics[] = {
        {0, "OggS", 4, "an Ogg file"},
        {0, "fLaC", 4, "a FLAC file"},
        {0, "ID3", 3, "an MP3 file"},
        {0, "\xFF\xFB", 2, "an MP3 file"},
        {0, "\xFF\xF3", 2, "an MP3 file"},
        {0, "\xFF\xFA", 2, "an MP3 file"},
        {4, "ftyp", 4, "an MP4 file"},
        {0, "\x89PNG", 4, "a PNG picture"},
        {0, "\xFF\xD8\xFF", 3, "a JPEG picture"},
        {0, "GIF8", 4, "a GIF picture"},
        {8, "AVI ", 4, "an AVI film"},
        {8, "WAVE", 4, kWavFile},
        {0, "\0\0\1\xBA", 4, "an MPEG film"},
        {0, "\0\0\1\xB3", 4, "an MPEG film"},
        {0, "BM", 2, kBmpFile},
        {0, "KWD1", 4, kXaFile},
        {0, "FORM", 4, "an AIFF file"},
        {0, "MThd", 4, "a MIDI file"},
        {0, "\x30\x26\xB2\x75", 4, "a Windows Media file"},
        {0, "\x1A\x45\xDF\xA3", 4, "a Matroska film"},
    };
    for (const Magic& magic : kMagics) {
        if (std::memcmp(head + magic.at, magic.bytes, magic.count) == 0) return magic.kind;
    }
    return nullptr;
}

int64_t SizeOf(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 ? static_cast<int64_t>(info.st_size) : -1;
}

}  // namespace check
