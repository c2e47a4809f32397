// The files that a chart names: whether the player finds them, and what others would say.
#pragma once

#include <string>

#include "check/tables.h"
#include "platform/substitutes/substitute.h"

namespace check {

// How a found file's name differs from the one that the chart has.
enum class Spelling {
    kSame,
    kCase,
    kEncoding,
    kSubstitute,  // a file of another ending stands for it
};
Spelling CompareSpelling(const std::string& name, const std::string& found);

// Says so when it differs. place: of the name.
void CheckSpelling(Spelling spelling, const std::string& name, const std::string& found, Place place,
                   Findings* findings);

// A clause about a file that was not found: what stands there in its place, or what is odd about the name.
// Begins with "; " or is empty.
std::string HintAboutMissing(const Definition& definition, MediaKind kind);

// A clause about a file that is there and is none that the player reads: how it could be heard or seen.
std::string HintAboutKind(const std::string& name, MediaKind kind);

// The kind of file by its first bytes, such as "an Ogg file"; null when they say nothing.
const char* KindOf(const std::string& path);

int64_t SizeOf(const std::string& path);  // -1 when there is none

}  // namespace check
