#include "check/json.h"

#include <charconv>
#include <cmath>

#include "check/finding.h"
#include "platform/files/text.h"

namespace check {

void Json::Separate() {
    constexpr size_t kPiece = size_t{1} << 20;
    if (sink_ && out_->size() > kPiece) {
        (*sink_)(*out_);
        out_->clear();
    }
    if (!first_ && !after_key_) out_->push_back(',');
    first_ = after_key_ = false;
}

void Json::Begin(char bracket) {
    Separate();
    out_->push_back(bracket);
    first_ = true;
}

void Json::End(char bracket) {
    out_->push_back(bracket);
    first_ = false;
}

void Json::Key(std::string_view key) {
    Text(key);
    out_->push_back(':');
    after_key_ = true;
}

void Json::Text(std::string_view utf8) {
    static constexpr char kHex[] = "0123456789abcdef";
    Separate();
    out_->push_back('"');
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            *out_ += {'\\', c};
        } else if (byte < 0x20 || byte == 0x7F) {
            *out_ += "\\u00";
            *out_ += {kHex[byte >> 4], kHex[byte & 15]};
        } else {
            out_->push_back(c);
        }
    }
    out_->push_back('"');
}

void Json::Number(double number) {
    if (!std::isfinite(number)) return Null();
    Separate();
    char text[40];
    const auto end = std::to_chars(text, text + sizeof text, number).ptr;
    out_->append(text, end);
}

void Json::Integer(int64_t number) {
    Separate();
    char text[24];
    const auto end = std::to_chars(text, text + sizeof text, number).ptr;
    out_->append(text, end);
}

void Json::Flag(bool flag) {
    Separate();
    *out_ += flag ? "true" : "false";
}

void Json::Null() {
    Separate();
    *out_ += "null";
}

void Json::Title(const char* key, std::string_view bytes) {
    Shown(key, bytes, DisplayText(bytes));
}

void Json::Name(const char* key, std::string_view bytes) {
    Shown(key, bytes, ShownName(bytes));
}

void Json::Shown(const char* key, std::string_view bytes, const std::string& shown) {
    static constexpr char kHex[] = "0123456789abcdef";
    Member(key, shown);
    if (shown == bytes) return;
    std::string hex;
    for (const char c : bytes) hex += {kHex[static_cast<unsigned char>(c) >> 4], kHex[c & 15]};
    Member(std::string(key) + "Bytes", hex);
}

}  // namespace check
