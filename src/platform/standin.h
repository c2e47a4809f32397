// Files that stand for sounds and pictures which are not there (docs/packages.md).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/byteblock.h"
#include "platform/sound_file.h"

enum class MediaKind { kNone, kPicture, kSound };

// By the ending of its last part, in any letter case; kNone for other endings.
MediaKind KindOfName(std::string_view path);

// The paths that may stand for a name, in the order in which they are tried.
std::vector<std::string> StandInPaths(std::string_view path, MediaKind kind);

struct StandIn {
    std::string path;    // of this machine; empty when nothing stands for the name
    SharedBytes pBytes;  // a WAV or BMP file made of it; null when the file itself is taken as it is
    std::vector<std::string> refused;  // paths that were tried before it, files that could not be converted
};

// The first of the paths that is a file and either is of the readers' own kind, by its first bytes, or can be
// made into one. Paths that are no files are passed over without a word. Safe on any thread.
StandIn MakeStandIn(const std::vector<std::string>& paths, MediaKind kind, const MayHold& mayHold);

// The last part of a path as UTF-8 for a line of log, control characters blanked and cut to at most 80 bytes
// between two characters.
std::string NameForLog(std::string_view path);
