#include "app/long_options.h"

#include <cctype>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "platform/window/commandline.h"

namespace app {
namespace {

struct VerbName {
    const char* name;
    Verb verb;
    bool value;
};
constexpr VerbName kVerbs[] = {{"--open", Verb::kOpen, true},        {"--status", Verb::kStatus, false},
                               {"--play", Verb::kPlay, false},       {"--stop", Verb::kStop, false},
                               {"--restart", Verb::kRestart, false}, {"--seek", Verb::kSeek, true},
                               {"--speed", Verb::kSpeed, true},      {"--quit", Verb::kQuit, false}};

const VerbName* FindVerb(const char* argument) {
    for (const VerbName& row : kVerbs) {
        if (std::strcmp(argument, row.name) == 0) return &row;
    }
    return nullptr;
}

bool FindVerbWithValue(const char* argument) {
    const VerbName* row = FindVerb(argument);
    return row && row->value;
}

template <class Number>
bool ReadNumber(const std::string& text, Number* number) {
    const char* end = text.data() + text.size();
    const auto [after, error] = std::from_chars(text.data(), end, *number);
    return error == std::errc() && after == end;
}

// `LINE` or `LINE:COLUMN`; the column is checked and changes nothing.
bool ReadPlace(const std::string& text, std::optional<int>* line) {
    const size_t colon = text.find(':');
    int number = 0, column = 1;
    if (!ReadNumber(text.substr(0, colon), &number) || number < 1) return false;
    if (colon != std::string::npos && (!ReadNumber(text.substr(colon + 1), &column) || column < 1))
        return false;
    *line = number;
    return true;
}

class Parser {
public:
    Parser(int argc, const char* const* argv) : m_arguments(argv + 1, argv + argc) {}

    LongOptions Run() {
        while (m_at < m_arguments.size() && m_out.error.empty()) Take(m_arguments[m_at++]);
        if (m_out.error.empty() && m_out.follow && m_out.verb != Verb::kStatus)
            Fail("--follow belongs to --status");
        if (m_out.error.empty() && !m_of_open.empty() && m_out.verb != Verb::kOpen)
            Fail(m_of_open + " belongs to --open");
        return m_out;
    }

private:
    void Fail(const std::string& text) {
        if (m_out.error.empty()) m_out.error = text;
    }

    std::string Value(const std::string& option) {
        if (m_at < m_arguments.size()) return m_arguments[m_at++];
        Fail(option + " needs a value");
        return "";
    }

    void TakeVerb(const VerbName& row) {
        if (m_out.verb != Verb::kNone) return Fail("only one of the long commands can be given");
        m_out.verb = row.verb;
        if (!row.value || (row.verb == Verb::kOpen && m_at == m_arguments.size())) return;
        const std::string value = Value(row.name);
        int measure = 0;
        double speed = 0;
        if (row.verb == Verb::kOpen) {
            m_out.file = value;
            if (value.empty()) Fail("--open needs a chart or a folder");
        } else if (row.verb == Verb::kSeek) {
            if (!ReadNumber(value, &measure) || measure < -1) Fail("--seek needs a measure, -1 or more");
            m_out.measure = measure;
        } else {
            if (!ReadNumber(value, &speed) || !(speed >= 0.1 && speed <= 8)) Fail("--speed needs 0.1 to 8");
            m_out.speed = speed;
        }
    }

    // The system's own options, with their value attached.
    void TakeShort(const std::string& option) {
        const int letter = option.size() > 1 ? std::toupper(static_cast<unsigned char>(option[1])) : 0;
        const std::string value = option.substr(std::min<size_t>(2, option.size()));
        m_of_open = option;
        int number = 0;
        double speed = 0;
        switch (letter) {
            case 'N':
                if (!ReadNumber(value, &number)) Fail(option + ": -N needs a measure");
                m_out.measure = number;
                break;
            case 'M':
                if (!ReadNumber(value, &speed) || !(speed >= 0.1 && speed <= 8))
                    Fail(option + ": -M needs 0.1 to 8");
                m_out.speed = speed;
                break;
            case 'X':
            case 'Y':
                if (!ReadNumber(value, &number)) Fail(option + ": needs a place in pixels");
                m_out.passed.push_back(option);
                break;
            case 'P':
                break;  // it always plays
            default:
                Fail(option + " is unknown here");
        }
    }

    void Take(const std::string& argument) {
        if (const VerbName* row = FindVerb(argument.c_str())) return TakeVerb(*row);
        if (argument == "--at" || argument == "--wait" || argument == "--foreground") m_of_open = argument;
        if (argument == "--at") {
            if (!ReadPlace(Value(argument), &m_out.line)) Fail("--at needs LINE or LINE:COLUMN");
        } else if (argument == "--wait") {
            m_out.wait = true;
        } else if (argument == "--foreground") {
            m_out.foreground = true;
        } else if (argument == "--follow") {
            m_out.follow = true;
        } else if (!argument.empty() && argument[0] == '-') {
            TakeShort(argument);
        } else {
            Fail("\"" + argument + "\" is one argument too many");
        }
    }

    std::vector<std::string> m_arguments;
    size_t m_at = 0;
    std::string m_of_open;  // an option that says how a chart is opened
    LongOptions m_out;
};

}  // namespace

bool TakeFlag(int* argc, char** argv, const char* flag, const char* variable) {
    const char* wanted = std::getenv(variable);
    bool given = wanted && *wanted && std::strcmp(wanted, "0") != 0;
    int kept = 1, i = 1;
    while (i < *argc && (!*argv[i] || IsOptionArgument(argv[i]))) {
        const bool value = std::strcmp(argv[i], "--at") == 0 || FindVerbWithValue(argv[i]);
        if (std::strcmp(argv[i], flag) == 0) {
            given = true;
            ++i;
            continue;
        }
        for (int n = value ? 2 : 1; n > 0 && i < *argc; --n) argv[kept++] = argv[i++];
    }
    while (i < *argc) argv[kept++] = argv[i++];
    *argc = kept;
    argv[kept] = nullptr;
    return given;
}

LongOptions ParseLongOptions(int argc, const char* const* argv) {
    for (int i = 1; i < argc && (!*argv[i] || IsOptionArgument(argv[i])); ++i) {
        // The value of a long option is no chart's name.
        if (std::strcmp(argv[i], "--at") == 0) ++i;
        if (i < argc && FindVerb(argv[i])) return Parser(argc, argv).Run();
    }
    return {};
}

}  // namespace app
