// The words of a tool's command line.
#pragma once

#include <charconv>
#include <string>
#include <string_view>

namespace tools {

// Walks the words: options with their values, which follow as the next word or after `=`, and operands. `-`
// alone is an operand, and so is every word after `--`.
//
//     for (Arguments words(argc, argv); words.Next();)
//         if (words.IsOption()) ... words.name(), words.Value(&value)
class Arguments {
public:
    Arguments(int argc, const char* const* argv) : argc_(argc), argv_(argv) {}
    bool Next();  // false at the end
    bool IsOption() const { return option_; }
    const std::string& name() const { return name_; }  // of the option with its dashes; or the operand
    bool HasValue() const { return inline_; }          // given by `=`
    bool Value(std::string* value);                    // false when the line ends here

private:
    const int argc_;
    const char* const* const argv_;
    int at_ = 0;
    bool option_ = false, inline_ = false, only_operands_ = false;
    std::string name_, value_;
};

// Answers -h, --help, -V and --version, which may stand anywhere before `--`. True when one was there; *code
// is then 0, or output_failed when the text could not be written.
bool AnswerHelp(int argc, const char* const* argv, const char* help, int output_failed, int* code);

// Whether all that was printed has reached standard output.
bool FlushOutput();

// The whole text as a number within bounds. False for anything else, which leaves the number alone.
template <class T>
bool ReadWithin(std::string_view text, T least, T most, T* number) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !(value >= least && value <= most))
        return false;
    *number = value;
    return true;
}

}  // namespace tools
