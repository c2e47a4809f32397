// Explanations of findings about tempos, objects, sounds and pictures.
#pragma once

#include "check/explain.h"

namespace check {

inline constexpr std::string_view kReplaceSound = "Save the sound again as a WAV file of 16-bit PCM.";
inline constexpr std::string_view kReplacePicture = "Save the picture again as an uncompressed 24-bit BMP.";
inline constexpr std::string_view kRename = "Write the name in the chart exactly as on the disk.";

inline constexpr Explanation kObjectExplanations[] = {
    {"tempo-not-positive", "Time cannot pass at such a tempo, so the player keeps the tempo before it.",
     "#BPM01 0\n#00208:01", "Write a tempo above 0."},
    {"no-tempo", "Without a `#BPM` line the chart starts at 130.", "",
     "Write the line, even if 130 is right."},
    {"undefined-tempo", "The player uses 130 where a tempo is not defined.", "#00208:01",
     "Add the `#BPMxx` line, above the measures."},
    {"bpm-below-use",
     "The player reads a chart from top to bottom and uses 130 for tempos that are not yet defined.",
     "#00208:01\n#BPM01 180", "Move all `#BPMxx` lines above the measures."},
    {"unused-tempo", "The line has no effect.", "#BPM01 180", "Delete the line, or use the tempo."},
    {"zero-length", "The measure takes no time, so all its objects come at once.", "#00102:0",
     "Write a length above 0; 1 is four beats."},
    {"long-measure", "The chart seems to stop for minutes. Usually a digit or a point is wrong.",
     "#00102:150000", "Check the length of the measure and the tempo before it."},
    {"length-twice", "The player uses the last of them.", "#00102:0.5\n#00102:0.75",
     "Delete one of the lines."},
    {"odd-data", "Objects are pairs of characters. The player drops a last one without a partner.",
     "#00111:01020", "Complete or delete the last pair. All other objects depend on the number of pairs."},
    {"bad-digit", "The pair makes no object or a wrong one, and the places of the others count it.",
     "#00111:01 02", "Write two digits of 0-9 and A-Z (on channel 03: 0-9 and A-F)."},
    {"empty-data", "A measure without data is the same as no line.", "#00111:", "Delete the line."},
    {"invisible-notes", "These channels are for keys pressed without a note; the player presses none.",
     "#00131:01", "Move sounds that should be heard to channel 01."},
    {"poor-layer", "This layer appears when a note is missed. The player plays all notes.", "#00106:01",
     "Nothing."},
    {"double-note", "The second note hides the first; both sounds are played.", "#00111:01\n#00111:02",
     "Delete one of them, or move it to channel 01."},
    {"double-sound", "A sound has one voice. Started twice at once, it is heard once, and not louder.",
     "#00101:01\n#00111:01", "Delete one of the objects."},
    {"off-grid", "Objects a few ticks beside their grid mostly come from a conversion or a slip of the hand.",
     "#00111:00000000000000000000000000000000000000000000000000000000000000000000000000000001",
     "Move the objects to the grid, unless the shift is wanted."},
    {"late-start", "Measure 0 starts after one second. People skip a chart that seems to have no sound.",
     "#09901:01", "Leave out the empty measures, unless the silence is wanted."},
    {"too-late", "Times are milliseconds in 32 bits, which end after 24 days.", "",
     "Check tempos and lengths."},
    {"idle-end", "The chart lasts longer than its last sound, note or picture.", "#09902:1",
     "Delete the lines, unless the silence is wanted."},
    {"refused", "The player needs an object or a length after measure 0.", "#00011:01",
     "Start the song in measure 1, or set the length of measure 1 with `#00102:1`."},
    {"undefined-sound", "The objects are silent; notes are still shown.", "#00111:05",
     "Add the `#WAV05` line, or correct the object."},
    {"unused-sound", "The player loads the file but never plays it.", "#WAV05 kick.wav", "Delete the line."},
    {"sound-missing",
     "The player looks for the name, in any letter case and encoding, and then for files with the same name "
     "and "
     "another ending. None of them was there or could be read.",
     "#WAV01 kick.wav", "Add the file to the folder, or correct the name."},
    {"sound-unreadable", "The file is there but cannot be played. The finding tells why.", "", kReplaceSound},
    {"sound-format", "Players differ in what they decode. All read PCM of 8 or 16 bits.", "", kReplaceSound},
    {"sound-cut", "The download or copy was probably incomplete. The player adds silence.", "",
     "Get the file again from its source."},
    {"sound-empty", "The file has a header and no samples.", "",
     "Replace the file, or delete the `#WAV` line if silence is wanted."},
    {"late-attack",
     "The sound starts with its note, but what is heard comes later. Silence is all that is 40 dB below the "
     "loudest sample. From 20 ms on, people who play feel it; encoders alone can add 26 ms.",
     "", "Cut the silence off, or start the sound so much earlier."},
    {"sound-restarted",
     "Each sound has one voice, and a new start takes it over. Reported are cuts where a part is lost that "
     "reaches a tenth of the sound's loudest sample.",
     "#WAV01 cymbal.wav\n#00111:0101",
     "Nothing, if that is how it should sound. Otherwise define the file under a second number and take "
     "turns."},
    {"clipping",
     "The sounds add up to more than a sample can hold. This player turns the whole mix down for a moment; "
     "others cut the tops off, which crackles.",
     "", "Save the loudest sounds more quietly."},
    {"name-case", "Some systems distinguish letter case in names. This player does not.", "#WAV01 KICK.WAV",
     kRename, "`--fix` writes the letters as on the disk. Letters of two bytes stay as they are."},
    {"name-separator",
     "Everywhere `/` separates a folder from a file. A backslash does so only on some systems.",
     "#WAV01 drums\\kick.wav", "Write `/`.",
     "`--fix` writes `/`. Second bytes of characters that look like a backslash stay."},
    {"name-encoding", "Names on disks are usually UTF-8, charts often Shift-JIS. Not all players convert.",
     "", "Use names of ASCII characters only.",
     "`--fix` changes nothing here: players that expect the chart's encoding would lose the file."},
    {"stand-in",
     "Packages often hold Ogg or PNG files where the chart names WAV and BMP. This player converts them, but "
     "not "
     "every player does.",
     "#WAV01 kick.wav", "Nothing, or name the file that exists if your players need it.",
     "`--fix` writes the ending of the file that substitutes, unless the player would not read the file "
     "under "
     "that name, or the name is that of a film."},
    {"over-budget",
     "The player bounds what all files of one chart may take: 1 GiB of pictures and 2 GiB of decoded sounds. "
     "Beyond "
     "that, layers stay blank and sounds silent.",
     "", "Make the largest files smaller, or use fewer."},
    {"undefined-picture",
     "An object whose picture is not defined blanks its layer. Authors do this on purpose with numbers above "
     "FZ.",
     "#00104:05", "Add the `#BMP` or `#BGA` line, or use a number above FZ to blank the layer."},
    {"unused-picture", "The player loads the file but never shows it.", "#BMP05 sky.bmp", "Delete the line."},
    {"unused-rectangle", "The line has no effect.", "#BGA05 01 000 000 256 256 000 000", "Delete the line."},
    {"picture-missing",
     "The player looks for the name and for files with the same name and another ending. None was there or "
     "could be "
     "read, so the layer is blank.",
     "#BMP01 sky.bmp", "Add the file to the folder, or correct the name."},
    {"picture-unreadable", "The file is there but is not a BMP. Films are not shown.", "", kReplacePicture},
    {"picture-format", "The player draws uncompressed and run-length coded BMPs of usual depths.", "",
     kReplacePicture},
    {"picture-shifted", "The player ignores the offset in the header, so colours and place are wrong.", "",
     kReplacePicture},
    {"picture-cut", "The download or copy was probably incomplete. Missing rows are blank.", "",
     "Get the file again from its source."},
    {"picture-large", "A layer is 256 by 256 pixels; the rest is cut off.", "", "Make the picture smaller."},
};

}  // namespace check
