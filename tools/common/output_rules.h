// Which files a tool may write: never its input, and nothing of another kind by mistake.
#pragma once

#include <sys/types.h>

#include <set>
#include <string>
#include <utility>

namespace tools {

enum class FileKind { kWav, kFlac, kOgg, kXa, kPng, kVideo, kTrace };

// The one rule for every output of every tool. Ask Allow for all outputs before the first one is opened.
//
// Refused always: a protected file under any name or link, two outputs with one name, a name whose suffix
// means another kind of file. Refused without force: an existing file whose content is not of the output's
// kind; an empty one is of any kind. Pipes and devices are allowed: they hold nothing that could be lost.
class OutputRules {
public:
    explicit OutputRules(bool force) : force_(force) {}
    void Protect(const std::string& path);  // an input; has no effect when it does not exist
    // name: a path, or "-" for standard output. False with a reason, which names the file, when it is
    // refused.
    bool Allow(const std::string& name, FileKind kind, std::string* why);

private:
    using Identity = std::pair<dev_t, ino_t>;

    const bool force_;
    std::set<Identity> inputs_;
    std::set<std::string> outputs_;
};

// The file itself to which a name leads through symbolic links, which need not exist; absolute, so that it
// means the same when the working directory changes.
std::string FollowLinks(const std::string& name);

std::string SuffixOf(const std::string& name);  // of the last part, in lower case, with its dot; or empty

}  // namespace tools
