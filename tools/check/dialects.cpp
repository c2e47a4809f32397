#include "check/dialects.h"

#include <algorithm>
#include <string>

namespace check {
namespace {

constexpr Foreign kRandom = {"random-block", Severity::kWarning,
                             "the player knows no random blocks and plays the lines of all branches at once; "
                             "keep one branch"};
constexpr Foreign kStop = {"stop", Severity::kWarning,
                           "the player knows no stops and scrolls on, so everything behind comes too early; "
                           "write the pause as a change of tempo or as measures"};
constexpr Foreign kLongNote = {"long-note", Severity::kWarning,
                               "the player knows no long notes; write what is to be heard as ordinary notes"};
constexpr Foreign kLongNoteKind = {"long-note", Severity::kNote, "the player knows no long notes"};
constexpr Foreign kScroll = {
    "scroll", Severity::kWarning,
    "the player knows no changes of scroll speed and scrolls by tempo alone; times are "
    "not affected"};
constexpr Foreign kLandmine = {"landmine", Severity::kNote, "the player knows no landmines and shows none"};
constexpr Foreign kTempo = {
    "other-dialect", Severity::kWarning,
    "the player takes extended tempos from #BPMxx lines alone; rename the command to #BPM"};
constexpr Foreign kBase = {
    "other-dialect", Severity::kWarning,
    "the player knows no ids beyond two digits of 0-9 and A-Z, and takes small letters for "
    "capital ones"};
constexpr Foreign kSound = {"other-dialect", Severity::kWarning,
                            "the player knows one form of sound, #WAVxx, and plays it as its file has it"};
constexpr Foreign kPicture = {
    "other-dialect", Severity::kWarning,
    "the player shows the pictures of #BMPxx lines and the rectangles of #BGAxx lines "
    "alone"};
constexpr Foreign kRule = {"unused-header", Severity::kNote,
                           "the player judges nothing and has no use for it"};
constexpr Foreign kText = {"unused-header", Severity::kNote, "the player does not show it"};
constexpr Foreign kVolume = {"other-dialect", Severity::kNote, "the player plays every sound at full volume"};

struct Command {
    const char* word;
    bool numbered;  // two digits of a number stand behind the word
    const Foreign* meaning;
};
constexpr Command kCommands[] = {
    {"RANDOM", false, &kRandom},
    {"RONDAM", false, &kRandom},
    {"SETRANDOM", false, &kRandom},
    {"ENDRANDOM", false, &kRandom},
    {"IF", false, &kRandom},
    {"ELSEIF", false, &kRandom},
    {"ELSE", false, &kRandom},
    {"ENDIF", false, &kRandom},
    {"IFEND", false, &kRandom},
    {"SWITCH", false, &kRandom},
    {"SETSWITCH", false, &kRandom},
    {"CASE", false, &kRandom},
    {"SKIP", false, &kRandom},
    {"DEF", false, &kRandom},
    {"ENDSW", false, &kRandom},
    {"STOP", true, &kStop},
    {"STP", false, &kStop},
    {"LNOBJ", false, &kLongNote},
    {"LNTYPE", false, &kLongNoteKind},
    {"LNMODE", false, &kLongNoteKind},
    {"SCROLL", true, &kScroll},
    {"SPEED", true, &kScroll},
    {"EXBPM", true, &kTempo},
    {"BASEBPM", false, &kScroll},
    {"BASE", false, &kBase},
    {"WAVCMD", false, &kSound},
    {"EXWAV", true, &kSound},
    {"CDDA", false, &kSound},
    {"MIDIFILE", false, &kSound},
    {"OCT", false, &kSound},
    {"MATERIALS", false, &kSound},
    {"MATERIALSWAV", false, &kSound},
    {"MATERIALSBMP", false, &kPicture},
    {"DIVIDEPROP", false, &kSound},
    {"EXBMP", true, &kPicture},
    {"SWBGA", true, &kPicture},
    {"POORBGA", false, &kPicture},
    {"ARGB", true, &kPicture},
    {"VIDEOFILE", false, &kPicture},
    {"MOVIE", false, &kPicture},
    {"VIDEOFPS", false, &kPicture},
    {"VIDEOCOLORS", false, &kPicture},
    {"VIDEODLY", false, &kPicture},
    {"SEEK", true, &kPicture},
    {"EXTCHR", false, &kPicture},
    {"CHARFILE", false, &kPicture},
    {"CHARSET", false, &kText},
    {"TEXT", true, &kText},
    {"SONG", true, &kText},
    {"STAGEFILE", false, &kText},
    {"BANNER", false, &kText},
    {"BACKBMP", false, &kText},
    {"SUBTITLE", false, &kText},
    {"SUBARTIST", false, &kText},
    {"DIFFICULTY", false, &kText},
    {"MAKER", false, &kText},
    {"COMMENT", false, &kText},
    {"PREVIEW", false, &kText},
    {"PREVIEWPOINT", false, &kText},
    {"URL", false, &kText},
    {"EMAIL", false, &kText},
    {"HASH", false, &kText},
    {"VERSION", false, &kText},
    {"EXRANK", true, &kRule},
    {"DEFEXRANK", false, &kRule},
    {"CHANGEOPTION", true, &kRule},
    {"OPTION", false, &kRule},
    {"GAUGE", false, &kRule},
};

bool SameWord(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        const auto fold = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; };
        return fold(x) == fold(y);
    });
}

struct Channel {
    const char* first;  // of a range of channels, by their characters
    const char* last;
    const Foreign* meaning;
};
constexpr Foreign kLongNoteLane = {
    "long-note", Severity::kWarning,
    "the player knows no long notes: these are neither shown nor heard; write them as ordinary notes of the "
    "channels 11 to 29"};
constexpr Channel kChannels[] = {
    {"09", "09", &kStop},         {"51", "59", &kLongNoteLane}, {"5A", "5Z", &kLongNoteLane},
    {"61", "69", &kLongNoteLane}, {"6A", "6Z", &kLongNoteLane}, {"SC", "SC", &kScroll},
    {"SP", "SP", &kScroll},       {"D1", "DZ", &kLandmine},     {"E1", "EZ", &kLandmine},
    {"97", "98", &kVolume},       {"99", "99", &kText},         {"05", "05", &kPicture},
    {"0A", "0E", &kPicture},      {"A1", "A5", &kPicture},      {"A0", "A0", &kRule},
    {"A6", "A6", &kRule},
};

}  // namespace

const Foreign* FindForeignCommand(std::string_view word, const char** name) {
    for (const Command& command : kCommands) {
        const bool numbered = command.numbered && word.size() > 2;
        if (!SameWord(word, command.word) &&
            !(numbered && SameWord(word.substr(0, word.size() - 2), command.word)))
            continue;
        *name = command.word;
        return command.meaning;
    }
    return nullptr;
}

const Foreign* FindForeignChannel(std::string_view channel) {
    std::string name(channel);
    for (char& c : name) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    for (const Channel& range : kChannels) {
        if (name[0] == range.first[0] && name >= range.first && name <= range.last) return range.meaning;
    }
    return nullptr;
}

}  // namespace check
