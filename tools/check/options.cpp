#include "check/options.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "common/arguments.h"
#include "common/branches.h"

namespace check {

const char kHelp[] =
    "Usage: lumetra-check [OPTION]... CHART|FOLDER...\n"
    "       lumetra-check --fix|--diff [OPTION]... CHART|FOLDER...\n"
    "       lumetra-check --explain CODE\n"
    "\n"
    "Reports what the player ignores silently: lines that it skips, sounds and pictures that it\n"
    "cannot find or read, numbers that are not defined. Then prints figures about the chart.\n"
    "Folders are searched for .bms, .bme, .bml and .pms files. - reads a chart from standard\n"
    "input. The first line tells how much of the chart is played as written.\n"
    "\n"
    "      --format FORMAT    text (default), json, sarif or github\n"
    "      --json             the same as --format json\n"
    "      --fail-on LEVEL    exit with 1 on findings of this severity or above: error, warning\n"
    "                         (default) or note; with note, text lists notes too\n"
    "      --strict           the same as --fail-on note\n"
    "      --all              list every finding; by default text prints one line per code\n"
    "      --fix              make safe edits in the files: line ends, byte order marks, blanks at\n"
    "                         line ends, names as on the disk or of the file that substitutes;\n"
    "                         then report what remains. The mended chart of - goes to standard\n"
    "                         output, the report to standard error\n"
    "      --diff             print what --fix would change as a unified diff; exit with 1 if it would\n"
    "      --modern           check the chart as lumetra --modern plays it\n"
    "      --seed N           with --modern: take the branches of #RANDOM by this seed\n"
    "      --random N,...     with --modern: take these branches, one for each #RANDOM\n"
    "      --select CODE,...  report only these codes\n"
    "      --ignore CODE,...  do not report these codes\n"
    "      --explain CODE     print what a code means and how to fix it, and exit; all: every code\n"
    "      --statistics       print only how often each code was found in all charts\n"
    "      --color WHEN       auto (default), always or never\n"
    "      --path NAME        the name of the chart on standard input; its folder has the sounds\n"
    "  -j, --jobs N           check N charts at once; by default as many as there are cores\n"
    "  -h, --help             print this help and exit\n"
    "  -V, --version          print the version and exit\n"
    "\n"
    "Each finding is one line: FILE:LINE:COLUMN: SEVERITY: SENTENCE [CODE]. Severities: error,\n"
    "something is not played as written; warning, probably a mistake; note, no effect on the\n"
    "player. A file lumetra-check.toml in the chart's folder or above may set select, ignore and\n"
    "fail-on. Exit codes: 0 clean, 1 findings, 2 a chart cannot be read or the arguments are\n"
    "wrong, 3 the report or a mended chart cannot be written.\n";

namespace {

constexpr unsigned kMostJobs = 256;

// Each returns an error message, or an empty string.
std::string SetFormat(const std::string& value, Options* options) {
    constexpr const char* kNames[] = {"text", "json", "sarif", "github"};
    for (int i = 0; i < 4; ++i) {
        if (value != kNames[i]) continue;
        options->format = static_cast<Format>(i);
        return "";
    }
    return "unknown format: " + value;
}

std::string SetFailOn(const std::string& value, Options* options) {
    options->rules.fail_on = SeverityOf(value);
    return options->rules.fail_on ? "" : "--fail-on takes error, warning or note";
}

std::string SetColor(const std::string& value, Options* options) {
    const char* terminal = std::getenv("TERM");
    const bool plain = !terminal || std::string_view(terminal) == "dumb" || std::getenv("NO_COLOR");
    options->color = value == "always" || (value == "auto" && !plain && isatty(STDOUT_FILENO));
    return value == "always" || value == "auto" || value == "never" ? ""
                                                                    : "--color takes auto, always or never";
}

std::string SetSelect(const std::string& value, Options* options) {
    if (value.empty()) return "--select: no code given";
    if (!options->rules.select) options->rules.select.emplace();
    return AddCodes(value, &*options->rules.select);
}

std::string SetIgnore(const std::string& value, Options* options) {
    return AddCodes(value, &options->rules.ignore);
}

std::string SetExplain(const std::string& value, Options* options) {
    options->explain = value;
    return value == "all" || IndexOfCode(value) ? "" : "unknown code: " + value;
}

std::string SetPath(const std::string& value, Options* options) {
    options->path = value;
    return value.empty() ? "--path needs a name" : "";
}

std::string SetJobs(const std::string& value, Options* options) {
    return tools::ReadWithin(value, 1u, kMostJobs, &options->jobs) ? ""
                                                                   : "--jobs takes a number from 1 to 256";
}

std::string SetSeed(const std::string& value, Options* options) {
    return tools::ReadSeed(value, &options->choice) ? "" : "--seed takes a whole number";
}

std::string SetRandom(const std::string& value, Options* options) {
    options->choice.list.clear();
    return tools::ReadBranches(value, &options->choice)
               ? ""
               : "--random takes branches from 1 with commas between them";
}

struct ValueOption {
    const char* name;
    std::string (*set)(const std::string& value, Options* options);
};
constexpr ValueOption kValueOptions[] = {
    {"--format", SetFormat}, {"--fail-on", SetFailOn},  {"--color", SetColor},   {"--select", SetSelect},
    {"--ignore", SetIgnore}, {"--explain", SetExplain}, {"--path", SetPath},     {"--jobs", SetJobs},
    {"-j", SetJobs},         {"--seed", SetSeed},       {"--random", SetRandom},
};

std::string SetFlag(const std::string& name, Options* options) {
    if (name == "--json")
        options->format = Format::kJson;
    else if (name == "--strict")
        options->rules.fail_on = kNote;
    else if (name == "--statistics")
        options->statistics = true;
    else if (name == "--all")
        options->all = true;
    else if (name == "--fix")
        options->fix = true;
    else if (name == "--diff")
        options->diff = true;
    else if (name == "--modern")
        options->modern = true;
    else
        return "unknown option: " + name;
    return "";
}

std::string TakeOption(tools::Arguments* words, Options* options) {
    for (const ValueOption& option : kValueOptions) {
        std::string value;
        if (words->name() != option.name) continue;
        return words->Value(&value) ? option.set(value, options) : words->name() + " needs a value";
    }
    if (words->HasValue()) return "unknown option: " + words->name() + "=";
    return SetFlag(words->name(), options);
}

std::string CheckTogether(const Options& options) {
    if (!options.explain.empty()) return "";
    if (options.charts.empty()) return "no chart given";
    size_t inputs = 0;
    for (const std::string& chart : options.charts) inputs += chart == "-";
    if (inputs > 1) return "standard input can be read only once";
    if (inputs == 0 && !options.path.empty()) return "--path needs - as a chart";
    if (!options.modern && options.choice.kind != dialect::Choice::kFirst)
        return "--seed and --random need --modern";
    if (options.fix && options.diff) return "--fix and --diff exclude each other";
    if (options.diff && (options.format != Format::kText || options.statistics))
        return "--diff prints only a diff, in no other format";
    if (options.fix && inputs > 0 && (options.charts.size() > 1 || options.format != Format::kText))
        return "--fix writes the chart of - to standard output; give no other chart and no other format";
    const bool other = options.format == Format::kSarif || options.format == Format::kGithub;
    return options.statistics && other ? "--statistics works with text and json" : "";
}

}  // namespace

std::string ParseOptions(int argc, const char* const* argv, Options* options) {
    SetColor("auto", options);
    for (tools::Arguments words(argc, argv); words.Next();) {
        if (!words.IsOption()) {
            options->charts.push_back(words.name());
            continue;
        }
        const std::string error = TakeOption(&words, options);
        if (!error.empty()) return error;
    }
    return CheckTogether(*options);
}

}  // namespace check
