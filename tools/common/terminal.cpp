#include "common/terminal.h"

#include "host/terminal.h"
#include "platform/files/text.h"

namespace tools {
namespace {

// CP932 as UTF-8; false when a byte has no meaning in it.
bool FromCp932(std::string_view bytes, std::string* text) {
    for (size_t at = 0; at < bytes.size();) {
        const size_t length = IsCp932Lead(static_cast<unsigned char>(bytes[at])) ? 2 : 1;
        if (at + length > bytes.size()) return false;
        const char32_t code = Cp932CodePoint(bytes.data() + at, length);
        if (!code && bytes[at]) return false;
        AppendUtf8(text, code);
        at += length;
    }
    return true;
}

}  // namespace

std::string CleanText(std::string_view bytes) {
    std::string text;
    if (!IsUtf8(bytes) && FromCp932(bytes, &text)) return host::TerminalText(text);
    return host::TerminalText(bytes);
}

}  // namespace tools
