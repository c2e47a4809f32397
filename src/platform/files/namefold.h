// Makes file names comparable: names that differ only in letter case, in composed or decomposed UTF-8, or in
// UTF-8 or CP932 get the same key.
#pragma once

#include <string>
#include <string_view>

enum class NameEncoding { kUtf8, kCp932 };

// The key of one path component, read in that encoding. Invalid bytes are kept as they are, so every name has
// a key and different names stay distinct.
std::string FoldName(std::string_view name, NameEncoding nEncoding);

// The key under which a name is listed: read as UTF-8 if it is valid UTF-8, otherwise as CP932.
std::string FoldName(std::string_view name);

// Canonical decompositions of accented letters and voiced kana, sorted by nComposed. nSecond 0: a single
// character.
struct NameDecomposition {
    char16_t nComposed, nFirst, nSecond;
};
extern const NameDecomposition g_aNameDecomposition[];
extern const size_t g_nNameDecompositions;
