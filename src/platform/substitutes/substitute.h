// Substitutes: files of another kind that take the place of missing sounds and pictures (docs/packages.md).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/byteblock.h"
#include "platform/substitutes/sound.h"

enum class MediaKind { kNone, kPicture, kSound };

// The kind by the ending of the last part, in any letter case; kNone for other endings.
MediaKind KindOfName(std::string_view path);

// The candidates for a name, in the order in which they are tried. Thread-safe.
std::vector<std::string> SubstitutePaths(std::string_view path, MediaKind kind);

struct Substitute {
    std::string path;                  // on this machine; empty when there is no substitute
    SharedBytes pBytes;                // a WAV or BMP file made from it; null when the file is used as it is
    std::vector<std::string> refused;  // files tried before it that could not be converted
};

// Makes a substitute from the first path that is a file and either has the readers' own kind, by its first
// bytes, or can be converted. Skips paths that are not files silently. Thread-safe.
Substitute MakeSubstitute(const std::vector<std::string>& paths, MediaKind kind, const MayHold& mayHold);

// The last part of a path as UTF-8 for a log line: control characters become spaces, and the text is cut
// between two characters to at most 80 bytes.
std::string NameForLog(std::string_view path);
