// lumetra-check: says what the player passes over in silence.
#include <cstdio>
#include <string>
#include <vector>

#include "check/json.h"
#include "check/report.h"
#include "platform/files/filename.h"

namespace {

enum ExitCode { kClean = 0, kFindings = 1, kUnreadable = 2, kOutput = 3 };

const char kHelp[] =
    "Usage: lumetra-check [--json] [--strict] CHART...\n"
    "\n"
    "Says what the player passes over in silence: lines that it skips, sounds and pictures that\n"
    "it cannot find or read, numbers that name nothing, and the like; then gives figures.\n"
    "\n"
    "      --json       everything as JSON, every timed object too (docs/check.md)\n"
    "      --strict     shows notes too, and counts them\n"
    "  -h, --help       show this text\n"
    "  -V, --version    show the version\n"
    "\n"
    "A finding is FILE:LINE:COLUMN: SEVERITY: SENTENCE [CODE]. Severities: error, something is not\n"
    "played as it is written; warning, most likely a mistake; note, without effect on the player.\n"
    "Exit codes: 0 clean, 1 errors or warnings (with --strict notes too), 2 a chart that cannot\n"
    "be read, or wrong use, 3 the output cannot be written.\n";

struct Arguments {
    std::vector<std::string> charts;
    bool json = false, strict = false;
};

int Complain(ExitCode code, const std::string& text) {
    std::fprintf(stderr, "lumetra-check: %s\n", text.c_str());
    return code;
}

bool Write(const std::string& text) {
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
}

int EndOfText() {
    return std::fflush(stdout) == 0 && !std::ferror(stdout) ? kClean
                                                            : Complain(kOutput, "cannot write the report");
}

// A complaint, or empty.
std::string Parse(const std::vector<std::string>& words, Arguments* arguments) {
    bool files = false;
    for (const std::string& word : words) {
        if (files || word.size() < 2 || word[0] != '-')
            arguments->charts.push_back(word);
        else if (word == "--")
            files = true;
        else if (word == "--json")
            arguments->json = true;
        else if (word == "--strict")
            arguments->strict = true;
        else
            return "no option is called '" + word + "'";
    }
    return arguments->charts.empty() ? "no chart given" : "";
}

// The report of one chart, written to the standard output; its exit code.
int CheckOne(const std::string& name, const std::string& path, const Arguments& arguments) {
    std::string why, out;
    // Some megabytes; what it holds of a chart is released before the next one.
    auto subject = std::make_unique<check::Subject>(path);
    const bool readable = check::CheckChart(subject.get(), &why);
    subject->file_name = name;
    if (!readable) {
        Complain(kUnreadable, name + ": " + why);
        if (arguments.json) check::WriteUnreadableJson(name, why, &out);
    } else if (arguments.json) {
        check::WriteJson(*subject, &out, stdout);
    } else {
        check::WriteText(*subject, arguments.strict, &out);
    }
    if (!Write(out)) return kOutput;
    if (!readable) return kUnreadable;
    const check::Findings& findings = subject->findings;
    const bool found =
        findings.Count(check::Severity::kError) + findings.Count(check::Severity::kWarning) > 0 ||
        (arguments.strict && findings.Count(check::Severity::kNote) > 0);
    return found ? kFindings : kClean;
}

int CheckAll(const Arguments& arguments) {
    // A chart deep in folders is read from its own one, which becomes the working directory.
    std::vector<std::string> paths;
    for (const std::string& chart : arguments.charts) paths.push_back(AbsolutePath(chart));
    int code = kClean;
    if (arguments.json)
        Write("{\"format\":\"lumetra-check\",\"version\":" + std::to_string(check::kJsonVersion) +
              ",\"program\":\"" LUMETRA_VERSION "\",\"charts\":[\n");
    for (size_t i = 0; i < paths.size(); ++i) {
        if (i > 0) Write(arguments.json ? ",\n" : "\n");
        const int one = CheckOne(arguments.charts[i], paths[i], arguments);
        if (one == kOutput) return EndOfText();
        code = one > code ? one : code;
    }
    if (arguments.json) Write("\n]}\n");
    const int text = EndOfText();
    return text != kClean ? text : code;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    for (const std::string& word : words) {
        if (word == "--") break;
        if (word == "-h" || word == "--help") return Write(kHelp), EndOfText();
        if (word == "-V" || word == "--version")
            return std::puts("lumetra-check " LUMETRA_VERSION), EndOfText();
    }
    Arguments arguments;
    const std::string complaint = Parse(words, &arguments);
    if (complaint.empty()) return CheckAll(arguments);
    Complain(kUnreadable, complaint);
    std::fprintf(stderr, "Try 'lumetra-check --help'.\n");
    return kUnreadable;
}
