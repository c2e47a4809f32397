#include "common/arguments.h"

#include <cstdio>
#include <cstring>

#include "common/messages.h"

namespace tools {

bool Arguments::Next() {
    if (++at_ >= argc_) return false;
    name_ = argv_[at_];
    option_ = !only_operands_ && name_.size() > 1 && name_[0] == '-';
    if (option_ && name_ == "--") {
        only_operands_ = true;
        return Next();
    }
    const size_t sign = name_.rfind("--", 0) == 0 ? name_.find('=') : std::string::npos;
    inline_ = option_ && sign != std::string::npos;
    if (inline_) {
        value_ = name_.substr(sign + 1);
        name_.resize(sign);
    }
    return true;
}

bool Arguments::Value(std::string* value) {
    if (!inline_ && at_ + 1 >= argc_) return false;
    *value = inline_ ? value_ : argv_[++at_];
    return true;
}

bool AnswerHelp(int argc, const char* const* argv, const char* help, int output_failed, int* code) {
    for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
        const std::string_view word = argv[i];
        const bool wants_help = word == "-h" || word == "--help";
        if (!wants_help && word != "-V" && word != "--version") continue;
        if (wants_help)
            std::fputs(help, stdout);
        else
            std::printf("%s " LUMETRA_VERSION "\n", Program());
        *code = FlushOutput() ? 0 : Complain(output_failed, "cannot write the text");
        return true;
    }
    return false;
}

bool FlushOutput() {
    return std::fflush(stdout) == 0 && !std::ferror(stdout);
}

}  // namespace tools
