// The files that a chart names: how they are found, and what to say about those that are not.
#pragma once

#include <string>

#include "check/tables.h"
#include "platform/substitutes/substitute.h"

namespace check {

// How the name of a found file differs from the name in the chart.
enum class Spelling {
    kSame,
    kCase,
    kEncoding,
    kSubstitute,  // a file with another ending
};
Spelling CompareSpelling(const std::string& name, const std::string& found);

// Reports a name that differs from the file's, and proposes the file's where that is safe.
void CheckSpelling(Spelling spelling, const Definition& definition, const std::string& found, MediaKind media,
                   Findings* findings);

// The file that the player opened for a name, as this machine names it: the named one or a substitute. Empty
// if there is none. loaded: whether the player could use it.
std::string FindOpened(const std::string& path, MediaKind kind, bool loaded);

// Of a file that the player has loaded: whether it reads bytes that were converted from the file, and not the
// file itself.
bool IsConverted(const std::string& found);

// The end of a sentence that begins with the name of a file that was not found: " does not exist", and why.
std::string WhyMissing(const Definition& definition, MediaKind kind);

// A clause about an existing file that the player cannot read: how to make it heard or seen.
std::string HintAboutKind(const std::string& name, MediaKind kind);

// The kind of file by its first bytes, such as "an Ogg file"; null if they are of no known kind.
inline constexpr const char *kWavFile = "a WAV file", *kXaFile = "an XA file", *kBmpFile = "a BMP file";
const char* KindOf(const std::string& path);

int64_t SizeOf(const std::string& path);  // -1 if there is no file

}  // namespace check
