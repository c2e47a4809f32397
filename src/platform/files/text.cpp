#include "platform/files/text.h"

#include <iconv.h>

#include <array>
#include <memory>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

unsigned char Byte(std::string_view bytes, size_t i) {
    return static_cast<unsigned char>(bytes[i]);
}

bool IsContinuation(unsigned char c) {
    return (c & 0xC0) == 0x80;
}

// Sequence length according to the lead byte; 0 when the byte cannot lead.
size_t PromisedLength(unsigned char c) {
    if (c < 0x80) return 1;
    if (c >= 0xC2 && c <= 0xDF) return 2;
    if (c >= 0xE0 && c <= 0xEF) return 3;
    if (c >= 0xF0 && c <= 0xF4) return 4;
    return 0;
}

// True if the text has at least one complete multi-byte sequence, and its only faults are sequences truncated
// before an ASCII byte or the end.
bool IsUtf8WithCuts(std::string_view bytes) {
    bool bWhole = false;
    size_t i = 0;
    while (i < bytes.size()) {
        const size_t nLength = Utf8Length(bytes.substr(i));
        if (nLength) {
            if (nLength > 1) bWhole = true;
            i += nLength;
            continue;
        }
        const size_t nPromised = PromisedLength(Byte(bytes, i));
        if (nPromised < 2) return false;
        size_t nHave = 1;
        while (i + nHave < bytes.size() && IsContinuation(Byte(bytes, i + nHave))) ++nHave;
        if (nHave >= nPromised) return false;
        i += nHave;
        if (i < bytes.size() && Byte(bytes, i) >= 0x80) return false;
    }
    return bWhole;
}

void AppendShown(std::string* pText, char32_t c) {
    if ((c < 0x20 && c != '\n' && c != '\t') || (c >= 0x7F && c < 0xA0)) c = ' ';
    AppendUtf8(pText, c);
}

std::string ShowUtf8(std::string_view bytes) {
    std::string text;
    for (size_t i = 0; i < bytes.size();) {
        const size_t nLength = Utf8Length(bytes.substr(i));
        if (nLength) AppendShown(&text, Utf8CodePoint(bytes.data() + i, nLength));
        i += nLength ? nLength : 1;
    }
    return text;
}

std::string ShowCp932(std::string_view bytes) {
    std::string text;
    for (size_t i = 0; i < bytes.size();) {
        const unsigned char c = Byte(bytes, i);
        if (!IsCp932Lead(c)) {
            const char32_t n = Cp932CodePoint(bytes.data() + i, 1);
            AppendShown(&text, n || c == 0 ? n : kReplacement);
            ++i;
            continue;
        }
        // A lead byte without its trail byte was truncated; what follows is the text it was joined with.
        if (i + 1 == bytes.size() || !IsCp932Trail(Byte(bytes, i + 1))) {
            ++i;
            continue;
        }
        const char32_t n = Cp932CodePoint(bytes.data() + i, 2);
        AppendShown(&text, n ? n : kReplacement);
        i += !n && Byte(bytes, i + 1) < 0x80 ? 1 : 2;
    }
    return text;
}

class Converter {
public:
    Converter() : m_hIconv(iconv_open("UTF-8", "CP932")) {}
    ~Converter() {
        if (m_hIconv != reinterpret_cast<iconv_t>(-1)) iconv_close(m_hIconv);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    char32_t Convert(const char* pBytes, size_t nLength) {
        if (m_hIconv == reinterpret_cast<iconv_t>(-1)) return 0;
        std::array<char, 2> in = {pBytes[0], nLength > 1 ? pBytes[1] : '\0'};
        std::array<char, 8> out;
        char* pIn = in.data();
        char* pOut = out.data();
        size_t nIn = nLength, nOut = out.size();
        iconv(m_hIconv, nullptr, nullptr, nullptr, nullptr);
        if (iconv(m_hIconv, &pIn, &nIn, &pOut, &nOut) == static_cast<size_t>(-1) || nIn) return 0;
        const std::string_view result(out.data(), out.size() - nOut);
        return !result.empty() && Utf8Length(result) == result.size()
                   ? Utf8CodePoint(out.data(), result.size())
                   : 0;
    }

private:
    iconv_t m_hIconv;
};

}  // namespace

size_t Utf8Length(std::string_view bytes) {
    if (bytes.empty()) return 0;
    const unsigned char c = Byte(bytes, 0);
    const size_t nLength = PromisedLength(c);
    if (nLength < 2) return nLength;
    if (bytes.size() < nLength) return 0;
    for (size_t i = 1; i < nLength; ++i) {
        if (!IsContinuation(Byte(bytes, i))) return 0;
    }
    const unsigned char second = Byte(bytes, 1);
    if ((c == 0xE0 && second < 0xA0) || (c == 0xED && second > 0x9F) || (c == 0xF0 && second < 0x90) ||
        (c == 0xF4 && second > 0x8F))
        return 0;
    return nLength;
}

bool IsUtf8(std::string_view bytes) {
    for (size_t i = 0; i < bytes.size();) {
        const size_t nLength = Utf8Length(bytes.substr(i));
        if (!nLength) return false;
        i += nLength;
    }
    return true;
}

char32_t Utf8CodePoint(const char* pBytes, size_t nLength) {
    constexpr std::array<unsigned char, 5> kMask = {0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t n = static_cast<unsigned char>(pBytes[0]) & kMask[nLength];
    for (size_t i = 1; i < nLength; ++i) n = n << 6 | (static_cast<unsigned char>(pBytes[i]) & 0x3F);
    return n;
}

void AppendUtf8(std::string* pText, char32_t n) {
    if (n < 0x80) {
        pText->push_back(static_cast<char>(n));
    } else if (n < 0x800) {
        pText->push_back(static_cast<char>(0xC0 | n >> 6));
        pText->push_back(static_cast<char>(0x80 | (n & 0x3F)));
    } else if (n < 0x10000) {
        pText->push_back(static_cast<char>(0xE0 | n >> 12));
        pText->push_back(static_cast<char>(0x80 | (n >> 6 & 0x3F)));
        pText->push_back(static_cast<char>(0x80 | (n & 0x3F)));
    } else {
        pText->push_back(static_cast<char>(0xF0 | n >> 18));
        pText->push_back(static_cast<char>(0x80 | (n >> 12 & 0x3F)));
        pText->push_back(static_cast<char>(0x80 | (n >> 6 & 0x3F)));
        pText->push_back(static_cast<char>(0x80 | (n & 0x3F)));
    }
}

char32_t Cp932CodePoint(const char* pBytes, size_t nLength) {
    const unsigned char c = static_cast<unsigned char>(pBytes[0]);
    if (nLength == 1) {
        if (c < 0x80) return c;
        return c >= 0xA1 && c <= 0xDF ? 0xFF61 + (c - 0xA1) : 0;  // half-width katakana
    }
    // Created on the first two-byte character, because loading the table takes a millisecond.
    thread_local Converter converter;  // names are matched on several threads
    return converter.Convert(pBytes, nLength);
}

std::string DisplayText(std::string_view bytes) {
    return IsUtf8(bytes) || IsUtf8WithCuts(bytes) ? ShowUtf8(bytes) : ShowCp932(bytes);
}
