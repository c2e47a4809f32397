#include "platform/files/namefold.h"

#include <algorithm>

#include "platform/ascii.h"
#include "platform/files/text.h"

namespace {

// Invalid bytes are kept in a plane that no name uses.
constexpr char32_t kRawByte = 0xF0000;

char32_t LowerExtended(char32_t c) {
    if ((c >= 0xC0 && c <= 0xDE && c != 0xD7) || (c >= 0x391 && c <= 0x3A9) || (c >= 0x410 && c <= 0x42F) ||
        (c >= 0xFF21 && c <= 0xFF3A))
        return c + 32;
    if (c >= 0x400 && c <= 0x40F) return c + 80;
    if (c == 0x3C2) return 0x3C3;  // final sigma
    if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) return c & 1 ? c + 1 : c;
    if ((c >= 0x100 && c <= 0x137) || (c >= 0x14A && c <= 0x177)) return c | 1;
    return c;
}

// Unifies the two common mappings of these CP932 characters to Unicode.
char32_t Unify(char32_t c) {
    switch (c) {
        case 0x301C:
            return 0xFF5E;  // wave dash
        case 0x2016:
            return 0x2225;
        case 0x2212:
            return 0xFF0D;  // minus
        case 0x2014:
            return 0x2015;
        case 0x00A2:
            return 0xFFE0;
        case 0x00A3:
            return 0xFFE1;
        case 0x00AC:
            return 0xFFE2;
        default:
            return c;
    }
}

char32_t Lower(char32_t c) {
    if (c < 0x80) return static_cast<unsigned char>(AsciiLower(static_cast<char>(c)));
    return LowerExtended(Unify(c));
}

const NameDecomposition* FindDecomposition(char32_t c) {
    const NameDecomposition* pEnd = g_aNameDecomposition + g_nNameDecompositions;
    const auto p =
        std::lower_bound(g_aNameDecomposition, pEnd, c,
                         [](const NameDecomposition& row, char32_t n) { return row.nComposed < n; });
    return p != pEnd && p->nComposed == c ? p : nullptr;
}

void AppendHangul(std::string* pKey, char32_t c) {
    constexpr char32_t kVowels = 21, kTails = 28;
    const char32_t n = c - 0xAC00;
    AppendUtf8(pKey, 0x1100 + n / (kVowels * kTails));
    AppendUtf8(pKey, 0x1161 + n / kTails % kVowels);
    if (n % kTails) AppendUtf8(pKey, 0x11A7 + n % kTails);
}

// Decompositions nest at most four levels deep, and only in the first character.
void AppendFolded(std::string* pKey, char32_t c) {
    if (c < 0x80) {
        pKey->push_back(static_cast<char>(Lower(c)));
        return;
    }
    if (c >= 0xAC00 && c <= 0xD7A3) {
        AppendHangul(pKey, c);
        return;
    }
    if (const NameDecomposition* p = FindDecomposition(c)) {
        AppendFolded(pKey, p->nFirst);
        if (p->nSecond) AppendFolded(pKey, p->nSecond);
        return;
    }
    AppendUtf8(pKey, Lower(c));
}

size_t CharLength(std::string_view rest, NameEncoding nEncoding) {
    if (nEncoding == NameEncoding::kUtf8) return Utf8Length(rest);
    const bool bPair = rest.size() > 1 && IsCp932Lead(static_cast<unsigned char>(rest[0])) &&
                       IsCp932Trail(static_cast<unsigned char>(rest[1]));
    return bPair ? 2 : 1;
}

}  // namespace

std::string FoldName(std::string_view name, NameEncoding nEncoding) {
    std::string key;
    key.reserve(name.size());
    for (size_t i = 0; i < name.size();) {
        size_t nLength = CharLength(name.substr(i), nEncoding);
        char32_t c = 0;
        if (nLength)
            c = nEncoding == NameEncoding::kUtf8 ? Utf8CodePoint(name.data() + i, nLength)
                                                 : Cp932CodePoint(name.data() + i, nLength);
        if (!c) {
            c = kRawByte + static_cast<unsigned char>(name[i]);
            nLength = 1;
        }
        AppendFolded(&key, c);
        i += nLength;
    }
    return key;
}

std::string FoldName(std::string_view name) {
    return FoldName(name, IsUtf8(name) ? NameEncoding::kUtf8 : NameEncoding::kCp932);
}
