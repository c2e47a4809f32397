#include "host/terminal.h"

#include <cstdint>
#include <cstdio>

namespace host {
namespace {

struct Character {
    uint32_t code;
    size_t length;  // in bytes; 0: no well-formed UTF-8
};

Character Decode(std::string_view bytes) {
    constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};  // the shortest form's, by length
    const auto lead = static_cast<unsigned char>(bytes[0]);
    if (lead < 0x80) return {lead, 1};
    const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) return {0, 0};
    uint32_t code = lead & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(bytes[i]);
        if ((next & 0xC0) != 0x80) return {0, 0};
        code = code << 6 | (next & 0x3Fu);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < kLeast[length] || code > 0x10FFFF || surrogate) return {0, 0};
    return {code, length};
}

bool IsHarmless(uint32_t code) {
    const auto within = [code](uint32_t first, uint32_t last) { return code >= first && code <= last; };
    return code >= 0x20 && !within(0x7F, 0x9F) && !within(0x200E, 0x200F) && !within(0x2028, 0x202E) &&
           !within(0x2066, 0x2069) && code != 0x061C;
}

}  // namespace

std::string TerminalText(std::string_view bytes) {
    std::string text;
    for (size_t at = 0; at < bytes.size();) {
        const Character c = Decode(bytes.substr(at));
        const size_t length = c.length ? c.length : 1;
        if (c.length && IsHarmless(c.code)) {
            text += bytes.substr(at, length);
        } else {
            char escape[16];
            const unsigned byte = static_cast<unsigned char>(bytes[at]);
            std::snprintf(escape, sizeof escape, length == 1 ? "\\x%02X" : "\\u%04X",
                          length == 1 ? byte : static_cast<unsigned>(c.code));
            text += escape;
        }
        at += length;
    }
    return text;
}

}  // namespace host
