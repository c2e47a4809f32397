// From a name as a chart or a user writes it to a file of this disk.
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

// The ways in which a name can be cut into parts, likeliest first, each once. There are several only where
// `\` may be the second byte of a two-byte character or a separator.
std::vector<PathParts> CutPath(std::string_view path);

// The path in this machine's form.
std::string JoinPath(const PathParts& path);

// Calls pfnTry(candidate, pUser) with paths of this machine that the name can stand for until it gives true:
// first those that are spelled as the name is, then those that FoldName makes equal to it, part by part. True
// when one did. The number of candidates is bounded.
using PathTry = bool (*)(const std::string& candidate, void* pUser);
bool MatchPath(std::string_view path, PathTry pfnTry, void* pUser);

// Files that can lie beside the one that the name stands for: its stem (what stands before the last dot of
// its last part, or all of that) with one of the endings, such as ".ogg". By endings in their order, then as
// MatchPath would try them; paths of this machine, taken from listings without looking at the files. Their
// number is bounded.
std::vector<std::string> SiblingPaths(std::string_view path, const std::vector<std::string_view>& endings);

// Drops what is remembered of folders.
void ForgetPaths();
