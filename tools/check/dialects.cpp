#include "check/dialects.h"

#include "platform/ascii.h"

namespace check {
namespace {

constexpr Foreign kRandom = {
    "random-block", kWarning,
    "the player does not support random blocks and plays the lines of all branches; keep only one branch"};
constexpr Foreign kStop = {
    "stop", kWarning,
    "the player does not support stops and scrolls on, so everything after them comes too early; write the "
    "pause as a tempo change or as measures"};
constexpr Foreign kLongNote = {
    "long-note", kWarning,
    "the player does not support long notes; write what should be heard as ordinary notes"};
constexpr Foreign kLongNoteType = {"long-note", kNote, "the player does not support long notes"};
constexpr Foreign kScroll = {
    "scroll", kWarning,
    "the player does not support scroll speed changes; it scrolls by tempo only, and times stay the same"};
constexpr Foreign kLandmine = {"landmine", kNote,
                               "the player does not support landmines and does not show them"};
constexpr Foreign kTempo = {"other-dialect", kWarning,
                            "the player reads extended tempos only from #BPMxx; rename the command to #BPM"};
constexpr Foreign kBase = {
    "other-dialect", kWarning,
    "the player reads only two-digit numbers of 0-9 and A-Z, and treats small letters as capital ones"};
constexpr Foreign kSound = {"other-dialect", kWarning,
                            "the player reads sounds only from #WAVxx, and plays each file unchanged"};
constexpr Foreign kPicture = {"other-dialect", kWarning,
                              "the player shows only the pictures of #BMPxx and the rectangles of #BGAxx"};
constexpr Foreign kRule = {"unused-header", kNote, "the player does not judge and ignores it"};
constexpr Foreign kText = {"unused-header", kNote, "the player does not show it"};
constexpr Foreign kVolume = {"other-dialect", kNote, "the player plays every sound at full volume"};

struct Command {
    const char* word;
    bool numbered;  // may end with a two-digit number
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
    {"LNTYPE", false, &kLongNoteType},
    {"LNMODE", false, &kLongNoteType},
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

struct Channel {
    const char* first;  // of a range of channels, by their characters
    const char* last;
    const Foreign* meaning;
};
constexpr Foreign kLongNoteLane = {
    "long-note", kWarning,
    "the player does not support long notes and neither shows nor plays these; write them as ordinary notes "
    "on channels 11 to 29"};
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
        if (!AsciiEqual(word, command.word) &&
            !(numbered && AsciiEqual(word.substr(0, word.size() - 2), command.word)))
            continue;
        *name = command.word;
        return command.meaning;
    }
    return nullptr;
}

const Foreign* FindForeignChannel(std::string_view channel) {
    const std::string name = AsciiUpper(std::string(channel));
    for (const Channel& range : kChannels) {
        if (name[0] == range.first[0] && name >= range.first && name <= range.last) return range.meaning;
    }
    return nullptr;
}

}  // namespace check
