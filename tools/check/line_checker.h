// The checks of single lines, and the state that passes from one line to the next.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "check/dialects.h"
#include "check/lines.h"
#include "check/probe.h"
#include "check/tables.h"

namespace check {

class LineChecker {
public:
    LineChecker(const char* text, int64_t size, const char* chart_path, Tables* tables, Findings* findings);
    void Check(Line* line);
    void Finish();  // reports what is reported once for many lines

private:
    // Reported once, at its first place, with the number of lines or objects.
    struct Group {
        Place place;
        Code code;
        Severity severity;
        std::string subject, effect;
        int64_t lines = 0, objects = 0;
        std::set<std::string> sounds;  // numbers as written, of objects that the player does not play as such
    };

    // bytes (line_checker.cpp)
    void CheckBytes(const Line& line);
    void CheckLoneLf(const Line& line, const char* lf);
    void CheckLoneCr(const Line& line, const char* end);
    void CheckCut(const Line& line, const char* end);
    void CheckNoCommand(const Line& line);
    bool CheckMark(const Line& line);
    void CheckBlanks(const Line& line);
    bool MayTrim(const Line& line, int length);

    // keywords (keyword_lines.cpp)
    void CheckKeyword(const Line& line);
    void CheckSkippedKeyword(const Line& line, const Reading& reading, std::string_view word);
    void ReportUnknown(const Line& line, std::string_view word);
    void CheckSkippedFile(const Line& line, const Reading& reading);
    void CheckSkippedHeader(const Line& line, std::string_view word);
    void Define(const Line& line, const Reading& reading);
    void DefineFile(const Line& line, const Reading& reading);
    void DefinePathWav(const Line& line);
    void DefineTempo(const Line& line, const Reading& reading);
    void CheckHeader(const Line& line, const Reading& reading);
    void CheckId(const Line& line, int column, const char* thing, int32_t number);
    void CheckFloat(const Line& line, int column);

    // rectangles (bga_lines.cpp)
    void DefineBga(const Line& line, const Reading& reading);
    void CheckBgaNumbers(const Line& line);

    // channels (channel_lines.cpp)
    void CheckChannel(Line* line, int32_t measure, int32_t channel);
    void CheckLength(const Line& line, int32_t measure);
    void CheckPairs(const Line& line, int32_t measure, int32_t channel);
    void CheckEnd(const Line& line, size_t bytes);
    void CheckTempoPair(const Line& line, int column, const char* pair);
    void TakePair(const Line& line, int column, const char* pair, int32_t measure, int32_t channel);
    void TakeSound(Place place, const char* pair, int32_t channel);
    void TakePicture(Place place, const char* pair);
    void TakeTempo(Place place, const char* pair, int32_t channel);
    int ColumnOf(const Line& line, size_t at) const;

    // groups about numbers that mean others to the player (folded.cpp)
    void NoteFolded(Place place, const char* pair, const char* thing, bool object);
    void JudgeFolded();
    void JudgeFoldedSound(const std::string& name, bool definition, Group* group);
    void JudgeLongNotes();

    Group& GroupOf(const std::string& key, Place place, Code code, Severity severity);

    const char* text_;
    const char* end_;
    Tables* tables_;
    Findings* findings_;
    Probe probe_;
    std::map<std::string, Group> groups_;
    std::map<std::string, std::string> written_;  // names of sounds by their number as written, in capitals
    std::map<Keyword, Place> headers_;
    bool underscores_ = false;  // in the data of the current line
    bool cut_ = false;          // a TAB has cut the current line
};

// The pair or id at p, at most two characters.
std::string_view PairAt(const char* p);
bool IsId(const char* p);      // two digits of 0-9, A-Z, a-z
bool IsFolded(const char* p);  // its first digit is one of G-Z, which sounds, pictures and tempos read as 0

}  // namespace check
