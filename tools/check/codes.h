// The codes of all findings: the one list that the program, docs/check.md and the tests share.
#pragma once

#include <bitset>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string_view>

namespace check {

enum class Severity {
    kError,    // something is not played as it is written
    kWarning,  // probably a mistake
    kNote,     // no effect on this player, or of interest only for other players
};

// A code never changes its meaning; new ones may be added.
struct CodeInfo {
    std::string_view name;
    Severity severity;
    Severity lesser;           // in milder cases; the same for most codes
    std::string_view meaning;  // for the list in docs/check.md
};

constexpr Severity kError = Severity::kError, kWarning = Severity::kWarning, kNote = Severity::kNote;

inline constexpr CodeInfo kCodes[] = {
    // bytes and lines
    {"lone-lf", kError, kWarning,
     "a LF without a CR hides everything up to the next CR LF; a warning if it hides no command"},
    {"lone-cr", kError, kError, "a CR without a LF does not end the line"},
    {"nul", kWarning, kWarning, "a NUL byte ends the line"},
    {"utf-16", kError, kError, "UTF-16 text, in which the player finds no command"},
    {"byte-order-mark", kError, kNote, "hides the first line; a note if that line is not a command"},
    {"line-too-long", kError, kError, "more than 1,023 bytes"},
    {"tab", kWarning, kWarning, "a TAB hides the rest of the line"},
    {"trailing-blank", kNote, kNote, "blanks at the end of a command"},
    {"leading-blank", kWarning, kWarning, "a blank before the `#`"},
    {"wide-hash", kWarning, kWarning, "a full-width number sign instead of `#`"},
    {"missing-hash", kWarning, kWarning, "a command without its `#`"},
    {"short-line", kNote, kNote, "a command of fewer than five characters"},
    {"unknown-command", kWarning, kWarning, "a command that no player knows"},
    {"bad-channel-line", kWarning, kWarning, "`#mmm` without a colon in column 7"},
    {"channel-letters", kWarning, kWarning, "a channel that is not two decimal digits"},
    {"unknown-channel", kWarning, kWarning, "a channel whose objects have no effect"},
    // other dialects
    {"random-block", kWarning, kWarning, "`#RANDOM`, `#IF` and the like: all branches are played"},
    {"stop", kWarning, kWarning, "`#STOPxx`, channel 09"},
    {"long-note", kWarning, kNote,
     "long notes are not shown as such: `#LNOBJ`, channels 51 to 69; a note for the type of long notes"},
    {"long-note-lost", kError, kError, "long notes on channels 51 to 69 whose sounds are not played"},
    {"scroll", kWarning, kWarning, "changes of scroll speed"},
    {"landmine", kNote, kNote, "channels D1 to E9"},
    {"other-dialect", kWarning, kNote,
     "other commands and channels that only other players know; a note for volumes"},
    {"unused-header", kNote, kNote, "headers that this player does not use"},
    // only with --modern
    {"branch", kWarning, kNote,
     "`#RANDOM`, `#IF` and the like: which lines are played; a note where all is in order"},
    {"bad-value", kWarning, kWarning, "a value or number that is passed over"},
    {"long-note-end", kWarning, kWarning, "a long note without its end, or an end without a start"},
    {"no-effect", kNote, kNote, "commands and channels without an effect on the compiled chart"},
    {"mixed", kWarning, kNote, "sounds that are mixed into others; a warning where that is heard"},
    {"not-compiled", kError, kWarning,
     "too much for the compiler, or nothing; a warning for times beyond the clock"},
    // values and numbers
    {"value-missing", kWarning, kNote, "a keyword without a value; a warning for `#BPM` and `#PATH_WAV`"},
    {"no-blank", kWarning, kWarning, "no blank where the keyword needs one"},
    {"zero-number", kWarning, kWarning, "number 00, which no object can use"},
    {"bad-id", kWarning, kWarning, "a number that is not two digits of 0-9 and A-Z"},
    {"folded-id", kError, kWarning,
     "a number above FZ, which is read as another one: `ZZ` as `0Z`; a warning where no other file sounds"},
    {"bad-number", kWarning, kWarning, "a value that is not a plain decimal number"},
    {"bpm-columns", kWarning, kWarning, "`#BPM120` without its blank, which means something else"},
    {"defined-twice", kWarning, kNote, "a later line replaces an earlier one; a note if both are the same"},
    // folders and rectangles
    {"path-too-long", kError, kError, "folder and name together are longer than 259 bytes"},
    {"path-wav", kWarning, kWarning, "`#PATH_WAV` replaces the chart's folder for the lines below it"},
    {"outside-folder", kNote, kNote, "files outside the chart's folder, through `..`, a link or `#PATH_WAV`"},
    {"bga-short", kWarning, kWarning, "a `#BGA` line of fewer than 22 characters"},
    {"bga-blanks", kWarning, kWarning, "two blanks in a row in a `#BGA` line"},
    {"bga-numbers", kWarning, kWarning, "fewer than six numbers in a `#BGA` line"},
    {"bga-clipped", kNote, kNote, "a rectangle larger than 256 by 256"},
    {"bga-empty", kWarning, kWarning, "a rectangle without width or height"},
    // tempos and times
    {"tempo-not-positive", kError, kError, "a tempo of 0 or less, or not a number"},
    {"no-tempo", kNote, kNote, "no `#BPM` line: the chart starts at 130"},
    {"undefined-tempo", kError, kError, "channel 08 uses a tempo that no line defines: 130"},
    {"bpm-below-use", kError, kError, "a `#BPMxx` line below the objects that use it: 130"},
    {"unused-tempo", kNote, kNote, "no object uses the tempo"},
    {"zero-length", kWarning, kWarning, "a measure without duration"},
    {"long-measure", kWarning, kWarning, "a measure that lasts longer than ten minutes"},
    {"length-twice", kWarning, kWarning, "two lengths for one measure"},
    {"odd-data", kWarning, kNote, "an odd number of characters; a note if the dropped one is `0` or a blank"},
    {"bad-digit", kWarning, kWarning, "a pair that is not a number but still takes a position"},
    {"empty-data", kNote, kNote, "nothing after the colon"},
    {"invisible-notes", kNote, kNote, "channels 31 to 49, neither shown nor heard"},
    {"poor-layer", kNote, kNote, "channel 06, a layer that is never shown"},
    {"double-note", kWarning, kWarning, "two notes at one position of a lane"},
    {"double-sound", kNote, kNote, "one sound started twice at the same time"},
    {"off-grid", kWarning, kWarning, "objects directly beside the grid that nearly all others keep"},
    {"late-start", kNote, kNote, "nothing is heard in the first ten seconds"},
    {"too-late", kError, kError, "an object beyond the range of the 32-bit clock"},
    {"idle-end", kNote, kNote, "the last measures have no object with an effect"},
    {"refused", kError, kError, "nothing comes after measure 0: the player refuses the chart"},
    // sounds and pictures
    {"undefined-sound", kWarning, kWarning, "an object uses a sound that no line defines"},
    {"unused-sound", kNote, kNote, "no object plays the sound"},
    {"sound-missing", kError, kNote, "the file does not exist; a note if no object plays it"},
    {"sound-unreadable", kError, kNote, "the file cannot be played; a note if no object plays it"},
    {"sound-format", kNote, kNote, "not PCM of 8 or 16 bits: only some players read it"},
    {"sound-cut", kWarning, kWarning, "the file is shorter than it declares"},
    {"sound-empty", kWarning, kWarning, "the file holds no sound"},
    {"late-attack", kWarning, kNote,
     "silence at the start of a sound that notes play; a note for less than 50 ms"},
    {"sound-restarted", kNote, kNote,
     "a sound longer than a second is cut by its own next start while it can still be heard"},
    {"clipping", kWarning, kNote, "the mix passes full scale; a note for less than 6 dB"},
    {"name-case", kNote, kNote, "found only in another letter case"},
    {"name-separator", kNote, kNote,
     "a backslash between folder and file, which only some systems accept as a separator"},
    {"name-encoding", kNote, kNote, "found only in another encoding"},
    {"stand-in", kNote, kNote, "the file does not exist, and a file of another kind substitutes for it"},
    {"over-budget", kError, kError,
     "the sounds or pictures of the chart together take too much memory or decoding"},
    {"undefined-picture", kWarning, kNote,
     "an object uses a picture that no line defines, which blanks its layer; a note where that is probably "
     "intended"},
    {"unused-picture", kNote, kNote, "no object shows the picture"},
    {"unused-rectangle", kNote, kNote, "no object shows the `#BGA` rectangle"},
    {"picture-missing", kError, kNote, "the file does not exist; a note if no object shows it"},
    {"picture-unreadable", kError, kNote, "the file is not a BMP; a note if no object shows it"},
    {"picture-format", kError, kNote, "a BMP that cannot be drawn; a note if only some players draw it"},
    {"picture-shifted", kWarning, kWarning, "the pixels do not directly follow header and palette"},
    {"picture-cut", kWarning, kWarning, "rows are missing"},
    {"picture-large", kNote, kNote, "larger than 256 by 256; only a part is shown"},
};

using CodeSet = std::bitset<std::size(kCodes)>;  // by place in the list

constexpr std::optional<size_t> IndexOfCode(std::string_view name) {
    for (size_t i = 0; i < std::size(kCodes); ++i) {
        if (kCodes[i].name == name) return i;
    }
    return std::nullopt;
}

// One of the codes above; any other does not compile.
class Code {
public:
    consteval Code(const char* name) : index_(IndexOfCode(name).value()) {}
    constexpr const CodeInfo* operator->() const { return &kCodes[index_]; }
    constexpr size_t Index() const { return index_; }

private:
    size_t index_;
};

std::string_view NameOf(Severity severity);
std::optional<Severity> SeverityOf(std::string_view name);

}  // namespace check
