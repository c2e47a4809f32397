// What the player makes of a keyword line, found out by letting it read the line.
#pragma once

#include <memory>
#include <string>

#include "chart/bms.h"

namespace check {

enum class Keyword {
    kNone,
    // definitions, found in the first pass
    kWav,
    kBmp,
    kBga,
    kPathWav,
    // headers, found in the second
    kTitle,
    kArtist,
    kGenre,
    kBpm,    // the tempo at the start
    kBpmxx,  // an extended tempo
    kPlayer,
    kPlayLevel,
    kRank,
    kVolWav,
    kTotal,
};

struct Reading {
    Keyword keyword = Keyword::kNone;  // the one whose head the line has
    bool taken = false;                // whether it did anything
    int32_t number = 0;                // of a sound, picture, definition or tempo
    double tempo = 0.0;
    int32_t value = 0;  // of kPlayer
    BgaDef bga{};
    std::string path;  // of a sound or a picture
};

// Reads lines one after the other, as the player does; #PATH_WAV lines act on those behind.
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
