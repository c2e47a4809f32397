// File names made comparable: the same key for names that differ in letter case, in composed or decomposed
// UTF-8, and in UTF-8 or CP932.
#pragma once

#include <string>
#include <string_view>

enum class NameEncoding { kUtf8, kCp932 };

// The key of one path component read in that encoding. Bytes that have no meaning in it keep their own value,
// so that names of any bytes have a key and different ones stay apart.
std::string FoldName(std::string_view name, NameEncoding nEncoding);

// The key by which a name stands in a listing: as UTF-8 where it is UTF-8, else as CP932.
std::string FoldName(std::string_view name);

// Canonical decompositions of accented letters and voiced kana, sorted by nComposed; nSecond 0: a single
// character.
struct NameDecomposition {
    char16_t nComposed, nFirst, nSecond;
};
extern const NameDecomposition g_aNameDecomposition[];
extern const size_t g_nNameDecompositions;
