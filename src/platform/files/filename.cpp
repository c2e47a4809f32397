#include "platform/files/filename.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "platform/files/alias.h"
#include "platform/files/text.h"

namespace {

constexpr size_t kMaxHanded = 180;  // bytes; a longer path leaves too little room for names of sounds

// Converts CP932 to UTF-8. Returns the part unchanged when it contains an invalid character.
std::string PartAsUtf8(const std::string& part) {
    if (IsUtf8(part)) return part;
    std::string text;
    for (size_t i = 0; i < part.size();) {
        const bool bPair = i + 1 < part.size() && IsCp932Lead(static_cast<unsigned char>(part[i])) &&
                           IsCp932Trail(static_cast<unsigned char>(part[i + 1]));
        const size_t nLength = bPair ? 2 : 1;
        const char32_t c = Cp932CodePoint(part.data() + i, nLength);
        if (!c) return part;
        AppendUtf8(&text, c);
        i += nLength;
    }
    return text;
}

std::string AsUtf8(const std::string& path) {
    std::string text;
    for (size_t i = 0; i <= path.size();) {
        const size_t nEnd = std::min(path.find('/', i), path.size());
        text += PartAsUtf8(path.substr(i, nEnd - i));
        if (nEnd < path.size()) text += '/';
        i = nEnd + 1;
    }
    return text;
}

// A name that contains a backslash keeps `/` as separator, because the exact spelling is tried first.
std::string WithBackslashes(std::string path) {
    if (path.find('\\') == path.npos) std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

}  // namespace

std::string AbsolutePath(const std::string& path) {
    if (!path.empty() && path[0] == '/') return path;
    std::string folder(PATH_MAX, '\0');
    if (!getcwd(folder.data(), folder.size())) return path;
    folder.resize(folder.find('\0'));
    if (folder.back() != '/') folder += '/';
    size_t nBegin = 0;
    while (path.compare(nBegin, 2, "./") == 0) nBegin += 2;
    return folder + path.substr(nBegin);
}

std::string FolderOf(const std::string& path) {
    const size_t nSlash = path.rfind('/');
    if (nSlash == path.npos) return "";
    return path.substr(0, std::max<size_t>(nSlash, 1));
}

std::string HandOver(const std::string& path) {
    std::string real = AbsolutePath(path);
    const std::string absolute = AsUtf8(real);
    const bool bAbsolute = real[0] == '/' && real.size() < PATH_MAX;
    const bool bPlain = bAbsolute && absolute.find('\\') == absolute.npos;
    if (bPlain && absolute.size() <= kMaxHanded) return WithBackslashes(absolute);
    // Only for a file that is there: what was misspelled is shown as it was given.
    struct stat info;
    if (stat(path.c_str(), &info) != 0) return WithBackslashes(absolute);
    // A path that this machine only takes piece by piece stays relative: the working directory never changes.
    if (!bAbsolute) real = "./" + path;
    const size_t nName = real.rfind('/') + 1;
    const std::string name = real.substr(nName);
    return AliasOf(real.substr(0, nName), name, AsUtf8(name));
}
