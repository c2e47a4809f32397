// What the player makes of a keyword line: found by letting it read the line.
#pragma once

#include <memory>
#include <string>

#include "chart/bms.h"

namespace check {

enum class Keyword {
    kNone,
    // definitions, which the player reads in its first pass
    kWav,
    kBmp,
    kBga,
    kPathWav,
    // headers, which it reads in the second
    kTitle,
    kArtist,
    kGenre,
    kBpm,    // the initial tempo
    kBpmxx,  // an extended tempo
    kPlayer,
    kPlayLevel,
    kRank,
    kVolWav,
    kTotal,
};

struct Reading {
    Keyword keyword = Keyword::kNone;  // the keyword that the line starts with
    bool taken = false;                // whether the line has an effect
    int32_t number = 0;                // of a sound, picture, definition or tempo
    double tempo = 0.0;
    int32_t value = 0;  // of kPlayer
    BgaDef bga{};
    std::string path;  // of a sound or a picture

    bool SameAs(const Reading& other) const;  // but for the path
};

// Reads lines in order, as the player does: #PATH_WAV affects the lines below it.
class Probe {
public:
    explicit Probe(const char* chart_path);
    Reading Read(const char* line, int length);
    const char* Folder() const { return folder_; }

private:
    Reading ReadPath(Keyword keyword, const char* line, int length);
    Reading ReadBga(const char* line, int length);
    Reading ReadPathWav(const char* line, int length);
    Reading ReadText(Keyword keyword, char* CBMS::*text, const char* line, int length);
    Reading ReadNumber(Keyword keyword, int32_t CBMS::*number, const char* line, int length);
    Reading ReadTempo(const char* line, int length);

    std::unique_ptr<CBMS> scratch_;
    char folder_[BMS_PATH] = {};
};

}  // namespace check
