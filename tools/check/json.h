// Writes JSON text piece by piece. Strings are valid UTF-8 whatever bytes they come from.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/parallel.h"

namespace check {

class Json {
public:
    // With a sink, moves the text there from time to time: a chart can have millions of objects.
    explicit Json(std::string* out, const tools::Sink* sink = nullptr) : out_(out), sink_(sink) {}

    void Begin(char bracket);  // `{` or `[`
    void End(char bracket);    // `}` or `]`
    void Key(std::string_view key);
    void Text(std::string_view utf8);  // which must be UTF-8
    void Number(double number);        // the shortest form that reads as the same; null for infinity and NaN
    void Integer(int64_t number);
    void Flag(bool flag);
    void Null();

    // Bytes of a chart or a disk: a member that shows them and, if that differs from the bytes, one named
    // key + "Bytes" in hexadecimal. A title is shown as the player shows it, a name as in findings.
    void Title(const char* key, std::string_view bytes);
    void Name(const char* key, std::string_view bytes);

    void Member(std::string_view key, std::string_view utf8) { Key(key), Text(utf8); }
    void Member(std::string_view key, int64_t number) { Key(key), Integer(number); }
    void NewLine() { out_->push_back('\n'); }

private:
    void Separate();
    void Shown(const char* key, std::string_view bytes, const std::string& shown);

    std::string* out_;
    const tools::Sink* sink_;
    bool first_ = true;  // in the current brackets
    bool after_key_ = false;
};

}  // namespace check
