#include "platform/window/commandline.h"

#include <sys/stat.h>

#include <vector>

#include "platform/files/filename.h"
#include "platform/files/pathmatch.h"
#include "platform/window/dialog.h"

namespace {

bool Exists(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

// Removes one quote at each end, for callers that quote for the system themselves.
std::string Unquoted(const std::string& name) {
    const bool bQuoted = name.size() >= 2 && name.front() == '"' && name.back() == '"';
    return bQuoted && !Exists(name) ? name.substr(1, name.size() - 2) : name;
}

std::string Quoted(const std::string& name) {
    return '"' + name + '"';
}

// For a name that may already use `\` as separator.
std::string WithSlashes(const std::string& name) {
    const std::vector<PathParts> cuts = CutPath(name);
    return cuts.empty() ? name : JoinPath(cuts.front());
}

std::string FileArgument(const std::string& argument) {
    std::string name = Unquoted(argument);
    if (!Exists(name)) name = WithSlashes(name);
    RememberOpenedFile(AbsolutePath(name).c_str());
    return Quoted(HandOver(name));
}

}  // namespace

bool IsOptionArgument(const std::string& argument) {
    if (argument[0] == '-') return true;
    return argument[0] == '/' && argument.find('/', 1) == argument.npos && !Exists(argument);
}

std::string BuildCommandLine(int argc, const char* const* argv) {
    std::string line;
    int i = 1;
    for (; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.empty()) continue;
        if (!IsOptionArgument(argument)) break;
        line += argument + ' ';
    }
    std::string name;
    for (int iName = i; iName < argc; ++iName) name += (iName > i ? " " : "") + std::string(argv[iName]);
    if (!name.empty()) return line + FileArgument(name);
    if (!line.empty()) line.pop_back();
    return line;
}
