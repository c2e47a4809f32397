// Matches a name, as a chart or a user writes it, to a file on this disk. Not thread-safe; lookup.h is.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct PathParts {
    bool bAbsolute = false;
    std::string root;                // the folder of an alias with its closing `/` (alias.h), otherwise empty
    std::vector<std::string> parts;  // none of them empty
    bool operator==(const PathParts&) const = default;
};

// All ways to split a name into parts, likeliest first, without duplicates. There are several only where a
// `\` may be either a separator or the second byte of a two-byte character.
std::vector<PathParts> CutPath(std::string_view path);

// The path in this machine's form.
std::string JoinPath(const PathParts& path);

// Calls pfnTry(candidate, pUser) with paths to which the name may refer, until it returns true: first those
// with the exact spelling, then those that FoldName makes equal, part by part. Returns whether one was
// accepted. The number of candidates is bounded.
using PathTry = bool (*)(const std::string& candidate, void* pUser);
bool MatchPath(std::string_view path, PathTry pfnTry, void* pUser);

// Candidates beside the file to which the name refers: its stem (the last part up to its last dot, or all of
// it) with each of the endings, such as ".ogg". Ordered by ending, then as in MatchPath. The paths come from
// listings; the files are not examined. Their number is bounded.
std::vector<std::string> SiblingPaths(std::string_view path, const std::vector<std::string_view>& endings);

// Drops cached listings.
void ForgetPaths();
