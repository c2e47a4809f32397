// A chart, what the player makes of it, and what the checker finds.
#pragma once

#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "chart/bms.h"
#include "check/edits.h"
#include "check/finding.h"
#include "check/tables.h"
#include "check/verdict.h"
#include "display/ddraw.h"
#include "platform/byteblock.h"
#include "sound/dsound.h"

namespace check {

struct SoundFile {
    int32_t number = 0;
    std::string found;  // path on this machine; empty if there is none
    bool loaded = false;
    std::string format;  // such as `PCM, 16 bits`; empty if unknown
    int rate = 0, channels = 0;
    double milliseconds = 0.0;
    int64_t bytes = 0;  // of memory while the chart is loaded
};

struct PictureFile {
    int32_t number = 0;
    std::string found;
    bool loaded = false;
    int width = 0, height = 0, bits = 0;
    int64_t bytes = 0;
};

struct Figures {
    int32_t measures = 0;  // from 0 to the last that is used
    double end_ms = 0.0;   // chart time at which the player stops; measure 0 starts at 1000
    double sound_end_ms = 0.0;
    double first_sound_ms = NAN, last_sound_ms = NAN;  // starts of what is heard; NaN: there are none
    double slowest = 0.0, fastest = 0.0;               // tempos
    int64_t notes = 0, invisible = 0, bgm = 0, pictures = 0, tempos = 0;
    int64_t lanes[0x50] = {};  // notes by channel, the two digits read as hexadecimal
    int64_t densest = 0;       // visible notes within one second
    double densest_ms = 0.0;   // where that second starts
    int64_t voices = 0;        // most sounds at once
    double voices_ms = 0.0;
    int64_t sound_bytes = 0, picture_bytes = 0;
};

struct Subject {
    explicit Subject(const std::string& file, const CodeSet& wanted = CodeSet().set())
        : file_name(file), findings(wanted) {}
    std::string file_name;                  // as the user wrote it
    std::string path;                       // as the player gets it
    SharedBytes provided;                   // the bytes of the chart if they are not on the disk
    std::optional<dialect::Choice> modern;  // the chart is compiled first; how its branches are taken
    CDSound sound;
    CDDraw display;
    std::unique_ptr<CBMS> chart;
    bool pictures_left_out = false;  // because they take too much together
    bool refused = false;            // objects then have no times
    Tables tables;
    std::vector<SoundFile> sounds;  // the defined ones, by number
    std::vector<PictureFile> pictures;
    Figures figures;
    Verdict verdict;
    Findings findings;
    std::unique_ptr<char[]> text;  // of the file, with a NUL after its end; for the edits
    Edits edits;                   // that would mend findings
    int64_t edited = -1;           // how many were made before this check; -1: not asked for
    std::string not_fixed;         // why they could not be written; empty: they were
};

// Minutes, seconds and milliseconds.
std::string TimeOf(double ms);

// Loads and checks the chart. False, with a reason, if the player cannot read the file at all.
bool CheckChart(Subject* subject, std::string* why);

// Reports what the player left out, from what it logged while it loaded the chart.
void CheckBudget(std::string_view log, Subject* subject);

// Checks a sound that no number of the compiled chart plays from its own file: loads it for itself.
void CheckMixedSound(Subject* subject, const Definition& definition, int64_t objects);

// The steps after loading and reading, in this order.
void CheckSounds(Subject* subject);
void CheckPictures(Subject* subject);
void CheckOutside(Subject* subject);
void CheckIds(Subject* subject);
void CheckTimes(Subject* subject);
void CheckGrid(Subject* subject);
void CheckHearing(Subject* subject);
void CountFigures(Subject* subject);

}  // namespace check
