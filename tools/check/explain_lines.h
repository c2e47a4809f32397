// Explanations of findings about lines and commands.
#pragma once

#include "check/explain.h"

namespace check {

inline constexpr std::string_view kCrLf = "Save the file with CR LF line ends.";

inline constexpr Explanation kLineExplanations[] = {
    {"lone-lf", "Only CR LF ends a line. The player reads up to the first LF and skips the rest up to CR LF.",
     "", kCrLf},
    {"lone-cr", "Only CR LF ends a line. What follows the CR becomes part of the value or the data.", "",
     kCrLf},
    {"nul", "A NUL byte ends a line like CR LF, so what follows it is read as a line of its own.", "",
     "Delete the NUL byte."},
    {"utf-16", "The player reads bytes. In UTF-16 every second byte of a command is 0, so it finds none.", "",
     "Save the file as Shift-JIS or UTF-8 without a byte order mark."},
    {"byte-order-mark",
     "The three bytes come before the `#` of the first line, so that line is not a command.", "",
     "Save the file without a byte order mark, or start it with an empty line."},
    {"line-too-long",
     "The player cuts a line after 1,023 bytes. The rest of the data then divides the measure differently, "
     "so all "
     "objects of the line move.",
     "", "Split the measure into several lines of the same channel, or write it on a coarser grid."},
    {"tab", "The player cuts a line at its first TAB.", "#TITLE<TAB>name",
     "Replace the TAB with a blank, or delete it."},
    {"leading-blank", "A command begins with `#` in column 1. Other lines are comments.", " #00111:01",
     "Delete the blank."},
    {"wide-hash", "A command begins with the ASCII character `#`. The full-width sign is another one.",
     "\xEF\xBC\x83WAV01 kick.wav", "Write `#`."},
    {"missing-hash", "A line without `#` is a comment.", "00111:01", "Add the `#`, or delete the line."},
    {"short-line", "The player ignores lines of fewer than five characters.", "#IF",
     "Nothing, unless the line was meant to have a value."},
    {"unknown-command", "The player skips the line, and so do other players.", "#TILTE My song",
     "Correct the spelling, or delete the line."},
    {"bad-channel-line", "A line of a measure is `#`, three digits, two characters of a channel and a colon.",
     "#00111 0101", "Write it as `#00111:0101`."},
    {"channel-letters", "The player reads only channels of two decimal digits and skips the line.",
     "#0011A:01", "Move the objects to a channel that the player supports."},
    {"unknown-channel",
     "The player reads the line, but its objects make no sound and no picture. They still lengthen the "
     "chart.",
     "#00110:01", "Move the objects to a channel that the player supports, or delete the line."},
    {"random-block",
     "The player has no random blocks: it reads the lines of all branches, so their objects come at the same "
     "time.",
     "#RANDOM 2\n#IF 1\n#00111:01\n#ENDIF", "Keep the lines of one branch and delete the others."},
    {"stop", "The player scrolls on, so everything after the stop comes too early.", "#STOP01 96\n#00209:01",
     "Write the pause as a slow tempo for a short distance, or as longer measures."},
    {"long-note", "The player does not know long notes. Objects on channels 51 to 69 make no sound.",
     "#LNOBJ ZZ\n#00151:0100", "Write the start of each long note as an ordinary note on channels 11 to 29."},
    {"scroll", "The speed on the screen follows the tempo alone. Times and sounds are correct.",
     "#SCROLL01 2\n#001SC:01", "Nothing, if only the look differs."},
    {"landmine", "Landmines punish a key press. The player presses none and does not show them.", "#001D1:01",
     "Nothing."},
    {"other-dialect", "Other players support the command or channel; this one ignores it.", "#EXBPM01 150",
     "Use the command that the finding names, if there is one."},
    {"unused-header", "The player neither shows nor uses the value.", "#STAGEFILE title.bmp", "Nothing."},
    {"value-missing", "The player skips a keyword without a value and keeps its default.", "#GENRE",
     "Write a value, or delete the line."},
    {"no-blank", "Keywords and numbers end with one blank. Without it the player skips the line.",
     "#WAV01kick.wav", "Write `#WAV01 kick.wav`."},
    {"zero-number", "00 means that there is no object, so nothing can use this definition.",
     "#WAV00 kick.wav", "Use a number from 01 to FZ."},
    {"bad-id", "A number is two digits of 0-9 and A-Z.", "#WAV1 kick.wav", "Write `#WAV01 kick.wav`."},
    {"folded-id",
     "Sounds, pictures and tempos have numbers up to FZ. The player reads a first digit from G to Z as 0, so "
     "two "
     "definitions share one number and the later one wins.",
     "#WAVZZ kick.wav", "Use a free number up to FZ."},
    {"bad-number", "The player reads a number up to the first character that does not fit.", "#BPM 1,5",
     "Write a plain decimal number with a point."},
    {"bpm-columns", "Without the blank, the player reads the digits as the number of an extended tempo.",
     "#BPM120.5", "Write `#BPM 120.5`."},
    {"defined-twice", "The last line wins. For extended tempos, each value applies to the lines below it.",
     "#WAV01 kick.wav\n#WAV01 snare.wav", "Give one of them another number, or delete it."},
    {"path-too-long", "The player has room for 259 bytes of folder and name together and cuts off the rest.",
     "", "Shorten the names of the folder and the file."},
    {"path-wav",
     "The lines below look for their files in this folder, which usually exists only on the author's "
     "machine.",
     "#PATH_WAV C:\\songs\\drums", "Delete the line and write the folder before each name."},
    {"outside-folder",
     "The player reads any file that a name leads to, but people who get the folder do not get that file.",
     "#WAV01 ../other song/kick.wav",
     "Copy the file into the chart's folder and change its name in the chart."},
    {"bga-short", "The player skips `#BGA` lines of fewer than 22 characters.", "#BGA02 01 0 0 8 8 0 0",
     "Write the numbers with more digits: `#BGA02 01 000 000 008 008 000 000`."},
    {"bga-blanks", "Each number begins after the next blank, so a second blank shifts all further numbers.",
     "#BGA02 01 0  0 256 256 0 0", "Leave one blank between two numbers."},
    {"bga-numbers", "The player reads missing numbers as 0.", "#BGA02 01 000 000 256",
     "Write all six: left, top, right and bottom in the picture, then x and y on the screen."},
    {"bga-clipped", "A layer is 256 by 256 pixels.", "#BGA02 01 0 0 300 300 0 0",
     "Make the rectangle smaller."},
    {"bga-empty", "Right must be above left, and bottom above top. Otherwise the layer is blank.",
     "#BGA02 01 100 100 50 50 0 0", "Write left, top, right and bottom, not width and height."},
};

}  // namespace check
