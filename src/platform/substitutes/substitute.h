// Substitutes: files of another kind that take the place of missing sounds and pictures (docs/packages.md).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/byteblock.h"
#include "platform/codec/ahead.h"
#include "platform/substitutes/budget.h"
#include "platform/substitutes/media.h"
#include "platform/substitutes/sound.h"

// By the ending of its last part, in any letter case; kNone for other endings.
MediaKind KindOfName(std::string_view path);
bool IsFilmName(std::string_view path);  // by its ending, too
// The film of that name, or one beside it with another ending; empty when there is none.
std::string FindFilm(const std::string& name);

// The candidates for a name, in the order in which they are tried. Thread-safe.
std::vector<std::string> SubstitutePaths(std::string_view path, MediaKind kind);

constexpr size_t kForeignHead = 8;  // bytes that ForeignKind looks at
// What a file is by its first bytes when the readers do not know its kind: Ogg, FLAC, PNG, JPEG, GIF, and MP3
// where the name also says so. kNone for everything else.
MediaKind ForeignKind(const BYTE* pHead, size_t nBytes, std::string_view name);

struct Substitute {
    std::string path;    // of this machine; empty when nothing takes the name's place
    SharedBytes pBytes;  // a WAV or BMP file made of it; null when the file itself is taken as it is
    DecodedPtr
        pDecoded;        // of a WAV file that is there under its name: its samples; path and pBytes are empty
    uint64_t nWork = 0;  // of making pBytes, also when it was made before
    std::vector<std::string> refused;  // paths that were tried before it, files that could not be converted
    bool bDecoded = false;             // pBytes was not kept from before
    bool bOverBudget = false;          // path is a file that was left alone; pBytes is null
};

struct ConversionLimits {
    MayHold mayHold;                  // empty: never refused
    const Budget* pBudget = nullptr;  // null: no bound
};

// The first of the paths that is a file and either is of the readers' own kind, by its first bytes, or can be
// made into one; results are kept and taken from what is kept (kept.h). Paths that are no files are passed
// over silently. Safe on any thread.
Substitute MakeSubstitute(const std::vector<std::string>& paths, MediaKind kind,
                          const ConversionLimits& limits);

// The last part of a path as UTF-8 for a log line: control characters become spaces, and the text is cut
// between two characters to at most 80 bytes.
std::string NameForLog(std::string_view path);
