// lumetra-check: reports what the player ignores silently.
#include <cstdio>
#include <string>
#include <vector>

#include "check/json.h"
#include "check/report.h"
#include "common/arguments.h"
#include "common/messages.h"
#include "platform/files/filename.h"

namespace {

enum ExitCode { kClean = 0, kFindings = 1, kUnreadable = 2, kOutput = 3 };

const char kHelp[] =
    "Usage: lumetra-check [--json] [--strict] CHART...\n"
    "\n"
    "Reports what the player ignores silently: lines that it skips, sounds and pictures that it\n"
    "cannot find or read, numbers that are not defined. Then prints figures about the chart.\n"
    "\n"
    "      --json       print everything as JSON, including all timed objects (docs/check.md)\n"
    "      --strict     also print notes; they count for the exit code\n"
    "  -h, --help       print this help and exit\n"
    "  -V, --version    print the version and exit\n"
    "\n"
    "Each finding is one line: FILE:LINE:COLUMN: SEVERITY: SENTENCE [CODE]. Severities: error,\n"
    "something is not played as written; warning, probably a mistake; note, no effect on the\n"
    "player. Exit codes: 0 clean, 1 errors or warnings (with --strict also notes), 2 a chart\n"
    "cannot be read or the arguments are wrong, 3 the output cannot be written.\n";

struct Arguments {
    std::vector<std::string> charts;
    bool json = false, strict = false;
};

bool Write(const std::string& text) {
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
}

int Flush() {
    return tools::FlushOutput() ? kClean : tools::Complain(kOutput, "cannot write the report");
}

// Returns an error message, or an empty string.
std::string Parse(int argc, const char* const* argv, Arguments* arguments) {
    for (tools::Arguments words(argc, argv); words.Next();) {
        if (!words.IsOption())
            arguments->charts.push_back(words.name());
        else if (words.name() == "--json" && !words.HasValue())
            arguments->json = true;
        else if (words.name() == "--strict" && !words.HasValue())
            arguments->strict = true;
        else
            return "unknown option: " + words.name();
    }
    return arguments->charts.empty() ? "no chart given" : "";
}

// Prints the report of one chart and returns its exit code.
int CheckOne(const std::string& name, const std::string& path, const Arguments& arguments) {
    std::string why, out;
    // Some megabytes, released before the next chart.
    auto subject = std::make_unique<check::Subject>(path);
    const bool readable = check::CheckChart(subject.get(), &why);
    subject->file_name = name;
    if (!readable) {
        tools::Complain(kUnreadable, name + ": " + why);
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
    // Loading a chart with a long path changes the working directory.
    std::vector<std::string> paths;
    for (const std::string& chart : arguments.charts) paths.push_back(AbsolutePath(chart));
    int code = kClean;
    if (arguments.json)
        Write("{\"format\":\"lumetra-check\",\"version\":" + std::to_string(check::kJsonVersion) +
              ",\"program\":\"" LUMETRA_VERSION "\",\"charts\":[\n");
    for (size_t i = 0; i < paths.size(); ++i) {
        if (i > 0) Write(arguments.json ? ",\n" : "\n");
        const int one = CheckOne(arguments.charts[i], paths[i], arguments);
        if (one == kOutput) return Flush();
        code = one > code ? one : code;
    }
    if (arguments.json) Write("\n]}\n");
    const int written = Flush();
    return written != kClean ? written : code;
}

}  // namespace

int main(int argc, char** argv) {
    tools::SetProgram("lumetra-check");
    int code = kClean;
    if (tools::AnswerHelp(argc, argv, kHelp, kOutput, &code)) return code;
    Arguments arguments;
    const std::string complaint = Parse(argc, argv, &arguments);
    return complaint.empty() ? CheckAll(arguments) : tools::WrongUse(kUnreadable, complaint);
}
