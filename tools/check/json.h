// JSON as text, written piece by piece. Strings are valid whatever bytes they come from.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace check {

class Json {
public:
    // What has been written goes to the file, when there is one, and out of the text from time to time: a
    // chart can have millions of objects.
    explicit Json(std::string* out, FILE* file = nullptr) : out_(out), file_(file) {}

    void Begin(char bracket);  // `{` or `[`
    void End(char bracket);    // `}` or `]`
    void Key(std::string_view key);
    void Text(std::string_view utf8);  // which must be UTF-8
    void Number(double number);        // the shortest that reads as the same; null for one that JSON has not
    void Integer(int64_t number);
    void Flag(bool flag);
    void Null();

    // Bytes of a chart or a disk: a member with them as the player shows them, and one named key + "Bytes" in
    // hexadecimal where that is not the same.
    void Bytes(const char* key, std::string_view bytes);

    void Member(std::string_view key, std::string_view utf8) { Key(key), Text(utf8); }
    void Member(std::string_view key, int64_t number) { Key(key), Integer(number); }
    void NewLine() { out_->push_back('\n'); }

private:
    void Separate();

    std::string* out_;
    FILE* file_;
    bool first_ = true;  // in the brackets at hand
    bool after_key_ = false;
};

}  // namespace check
