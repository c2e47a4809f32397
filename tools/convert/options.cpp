#include "convert/options.h"

#include "common/arguments.h"
#include "common/branches.h"

namespace convert {

const char kHelp[] =
    "Usage: lumetra-convert [options] CHART OUTDIR\n"
    "\n"
    "Writes a package that lumetra plays right: the chart in the player's own dialect, sounds that\n"
    "had to be mixed, pictures put together, and links to the other files that the chart uses. Films\n"
    "become stills when the ffmpeg program is installed.\n"
    "\n"
    "  --copy          copy the files instead of linking to them\n"
    "  --dry-run       report and list what would be written, and write nothing\n"
    "  --seed N        choose the branches of #RANDOM and #SWITCH by this number\n"
    "  --random LIST   choose these branches, such as 2,1,3; otherwise the first of each\n"
    "  --all           print all findings, not the first 5 of each kind\n"
    "  -h, --help      print this help and exit\n"
    "  -V, --version   print the version and exit\n"
    "\n"
    "OUTDIR must be new or empty, or hold nothing but a package of lumetra-convert, which is replaced.\n"
    "OUTDIR changes only when the whole package has been written.\n"
    "Exit codes: 0 done, 1 wrong usage or OUTDIR refused, 2 the chart cannot be read or played, 3 the\n"
    "output failed.\n";

namespace {

bool* FlagOf(const std::string& name, Options* options) {
    if (name == "--copy") return &options->copy;
    if (name == "--dry-run") return &options->dry_run;
    return name == "--all" ? &options->all : nullptr;
}

bool TakeChoice(const std::string& name, const std::string& value, dialect::Choice* choice) {
    *choice = {};
    return name == "--seed" ? tools::ReadSeed(value, choice) : tools::ReadBranches(value, choice);
}

}  // namespace

bool ParseOptions(int argc, const char* const* argv, Options* options, std::string* why) {
    const auto wrong = [why](const std::string& text) { return *why = text, false; };
    std::string chosen;
    for (tools::Arguments words(argc, argv); words.Next();) {
        const std::string name = words.name();
        if (!words.IsOption()) {
            std::string* operand = options->chart.empty() ? &options->chart : &options->folder;
            if (!operand->empty() || name.empty()) return wrong("wants a chart and a folder: " + name);
            *operand = name;
        } else if (bool* flag = FlagOf(name, options)) {
            if (words.HasValue()) return wrong(name + " has no value");
            *flag = true;
        } else if (name == "--seed" || name == "--random") {
            std::string value;
            if (!chosen.empty() && chosen != name) return wrong("--seed and --random exclude each other");
            if (!words.Value(&value)) return wrong(name + " needs a value");
            if (!TakeChoice(chosen = name, value, &options->choice))
                return wrong(name + ": invalid value: " + value);
        } else {
            return wrong("unknown option: " + name);
        }
    }
    if (options->chart.empty()) return wrong("no chart given");
    return !options->folder.empty() || wrong("no folder given for the package");
}

}  // namespace convert
