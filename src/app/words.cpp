#include "app/words.h"

#include <cctype>
#include <string>

#include "app/client.h"
#include "app/load.h"
#include "host/host.h"
#include "platform/files/filename.h"
#include "platform/window/commandline.h"

namespace app {
namespace {

constexpr char kKnown[] = "DMNPQRSWXY", kCommands[] = "MNPQRS";

char Letter(const std::string& option) {
    return option.size() > 1 ? static_cast<char>(std::toupper(static_cast<unsigned char>(option[1]))) : ' ';
}

// The index of the chart's name, argc when there is none.
int FindName(int argc, const char* const* argv) {
    int i = 1;
    while (i < argc && (!*argv[i] || IsOptionArgument(argv[i]))) ++i;
    return i;
}

bool HasOption(int argc, const char* const* argv, const std::string& letters) {
    for (int i = 1; i < FindName(argc, argv); ++i) {
        if (letters.find(Letter(argv[i])) != std::string::npos) return true;
    }
    return false;
}

// As the system joins it.
std::string Name(int argc, const char* const* argv) {
    std::string name;
    for (int i = FindName(argc, argv); i < argc; ++i)
        name += (name.empty() ? "" : " ") + std::string(argv[i]);
    return name;
}

void SayRemote(int argc, const char* const* argv, int others) {
    const std::string name = Name(argc, argv);
    if (others == 0) return Say("no instance is running");
    if (others > 1)
        return Say(std::to_string(others) + " instances are running; none of them takes commands");
    if (HasOption(argc, argv, kCommands))
        Say(host::PostWasRefused() ? "the running instance does not take the command"
                                   : "handed on to the running instance");
    if (!name.empty()) Say("an instance is running, so " + name + " is not opened; --open opens it there");
}

}  // namespace

void SayWhatIsIgnored(int argc, const char* const* argv) {
    const int name = FindName(argc, argv);
    for (int i = 1; i < name; ++i) {
        const bool known = !*argv[i] || std::string(kKnown).find(Letter(argv[i])) != std::string::npos;
        if (!known || (*argv[i] && argv[i][1] == '-')) Say(std::string(argv[i]) + " is unknown and ignored");
    }
    for (int i = name + 1; i < argc; ++i) {
        if (argv[i][0] == '-')
            return Say("options come before the chart: " + std::string(argv[i]) + " counts as its name");
    }
}

void SayHowItEnded(int argc, const char* const* argv, int exit_code, int others) {
    if (exit_code == 1 && !HasOption(argc, argv, "D")) return SayRemote(argc, argv, others);
    const std::string name = Name(argc, argv);
    if (exit_code != -1 || name.empty()) return;
    const Probe probe = ProbeChart(AbsolutePath(name));
    if (!probe.refusal.empty()) Say(name + ": " + probe.refusal);
}

}  // namespace app
