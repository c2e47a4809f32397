#include "convert/folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "common/output.h"
#include "common/output_rules.h"
#include "common/signals.h"

namespace convert {
namespace {

namespace fs = std::filesystem;

constexpr char kHead[] = "lumetra-convert 1";  // the first line of a manifest
constexpr size_t kMostNames = 100'000;

// The names that the manifest lists, one a line; false when there is none of ours.
bool ReadManifest(const std::string& folder, std::set<std::string>* names) {
    std::error_code error;
    if (fs::symlink_status(folder + kManifest, error).type() != fs::file_type::regular) return false;
    std::ifstream file(folder + kManifest, std::ios::binary);
    std::string line;
    if (!std::getline(file, line) || line != kHead) return false;
    while (std::getline(file, line) && names->size() < kMostNames) {
        if (IsSafe(line)) names->insert(line);
    }
    return true;
}

// A file in the folder that the manifest does not list; empty when there is none. Follows no links.
std::string FindForeign(const std::string& folder, const std::set<std::string>& names) {
    std::error_code error;
    fs::recursive_directory_iterator at(folder, error), end;
    for (; !error && at != end; at.increment(error)) {
        const std::string name = at->path().string().substr(folder.size());
        const bool is_folder = at->symlink_status(error).type() == fs::file_type::directory;
        const auto below = is_folder ? names.lower_bound(name + "/") : names.find(name);
        const bool listed =
            below != names.end() && (!is_folder || below->compare(0, name.size() + 1, name + "/") == 0);
        if (!listed && name != kManifest) return name;
    }
    return error ? error.message() : "";
}

// Removes the listed files and the folders that they leave empty. In their order a name comes before those
// below it: a link in the place of a folder is gone before anything could be meant behind it.
void RemovePackage(const std::string& folder, const std::set<std::string>& names) {
    std::set<std::string> folders;
    for (const std::string& name : names) {
        unlink((folder + name).c_str());
        for (size_t slash = name.find('/'); slash != name.npos; slash = name.find('/', slash + 1))
            folders.insert(name.substr(0, slash));
    }
    unlink((folder + kManifest).c_str());
    for (auto it = folders.rbegin(); it != folders.rend(); ++it) rmdir((folder + *it).c_str());
    rmdir(folder.c_str());
}

}  // namespace

bool IsSafe(const std::string& name) {
    if (name.empty() || name[0] == '/' || name.back() == '/' || name == kManifest) return false;
    if (name.find_first_of(std::string("\n\0", 2)) != name.npos) return false;
    const std::string parts = "/" + name + "/";
    return parts.find("/../") == parts.npos && parts.find("/./") == parts.npos &&
           parts.find("//") == parts.npos;
}

PackageFolder::~PackageFolder() {
    if (!staging_.empty()) RemovePackage(staging_, names_);
}

bool PackageFolder::Fail(const std::string& name, const std::string& why) {
    const std::lock_guard lock(mutex_);
    if (error_.empty()) error_ = name + ": " + why;
    return false;
}

bool PackageFolder::Check(const std::string& folder) {
    std::string plain = folder;
    while (plain.size() > 1 && plain.back() == '/') plain.pop_back();
    const fs::path last = fs::path(plain).filename();
    std::error_code error;
    path_ = (last == "." || last == ".." || plain == "/" ? fs::canonical(plain, error).string()
                                                         : tools::FollowLinks(plain)) +
            "/";
    if (error) return Fail(folder, error.message());
    struct stat status = {};
    if (lstat(path_.substr(0, path_.size() - 1).c_str(), &status) != 0) {
        if (errno == ENOENT && fs::is_directory(fs::path(path_).parent_path().parent_path(), error))
            return true;
        return Fail(folder,
                    errno == ENOENT ? "the folder in which it would be is not there" : std::strerror(errno));
    }
    if (!S_ISDIR(status.st_mode)) return Fail(folder, "is not a folder");
    if (fs::is_empty(path_, error) && !error) return true;
    std::set<std::string> names;
    if (error || !ReadManifest(path_, &names))
        return Fail(folder, "is not empty and holds no package of lumetra-convert");
    const std::string foreign = FindForeign(path_, names);
    if (!foreign.empty()) return Fail(folder, "holds a file that is not of its package: " + foreign);
    return replaces_ = true;
}

bool PackageFolder::Begin() {
    std::string name = path_.substr(0, path_.rfind('/', path_.size() - 2) + 1) + ".lumetra-convert-XXXXXX";
    if (!mkdtemp(name.data())) return Fail(name, std::strerror(errno));
    staging_ = name + "/";
    return chmod(name.c_str(), tools::ModeOfNew(0777)) == 0 || Fail(name, std::strerror(errno));
}

// The path for a new file, with its folders made.
bool PackageFolder::Place(const std::string& name, std::string* path) {
    if (tools::Stopped()) return Fail(name, "stopped");
    if (!IsSafe(name)) return Fail(name, "is no name for a file of a package");
    const std::lock_guard lock(mutex_);
    *path = staging_ + name;
    names_.insert(name);
    std::error_code error;
    fs::create_directories(fs::path(*path).parent_path(), error);
    if (!error) return true;
    error_ = name + ": " + error.message();
    return false;
}

bool PackageFolder::Write(const std::string& name, const void* bytes, size_t size) {
    std::string path;
    if (!Place(name, &path)) return false;
    tools::Output out;
    return (out.Open(path) && out.Write(bytes, size) && out.Commit()) || Fail(name, out.error());
}

bool PackageFolder::Link(const std::string& name, const std::string& target) {
    std::string path;
    if (!Place(name, &path)) return false;
    const fs::path from = fs::path(path_ + name).parent_path();
    const std::string link = fs::path(target).lexically_relative(from).string();
    return symlink(link.c_str(), path.c_str()) == 0 || Fail(name, std::strerror(errno));
}

bool PackageFolder::Copy(const std::string& name, const std::string& source) {
    std::string path;
    if (!Place(name, &path)) return false;
    std::error_code error;
    fs::copy_file(source, path, error);
    return !error || Fail(name, error.message());
}

// Puts the new package in the place of the old one, which then is in the other's.
bool PackageFolder::Exchange() {
    const auto bare = [](const std::string& path) { return path.substr(0, path.size() - 1); };
    const std::string to = bare(path_), from = bare(staging_), aside = from + "-old";
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_EXCHANGE) == 0) return true;
    // Not every file system can exchange two folders.
    if (std::rename(to.c_str(), aside.c_str()) != 0) return Fail(to, std::strerror(errno));
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        const int why = errno;
        return std::rename(aside.c_str(), to.c_str()), Fail(to, std::strerror(why));
    }
    return std::rename(aside.c_str(), from.c_str()) == 0 || Fail(aside, std::strerror(errno));
}

bool PackageFolder::Commit() {
    std::string manifest = std::string(kHead) + "\n";
    for (const std::string& name : names_) manifest += name + "\n";
    tools::Output out;
    if (!out.Open(staging_ + kManifest) || !out.Write(manifest.data(), manifest.size()) || !out.Commit())
        return Fail(kManifest, out.error());
    if (tools::Stopped()) return Fail(path_, "stopped");
    std::set<std::string> old;
    if (replaces_) {
        // Looked at once more: somebody may have put a file there meanwhile.
        if (!ReadManifest(path_, &old) || !FindForeign(path_, old).empty())
            return Fail(path_, "has changed meanwhile");
        if (!Exchange()) return false;
        names_ = std::move(old);
        return true;  // the destructor removes the old package
    }
    if (std::rename(staging_.substr(0, staging_.size() - 1).c_str(),
                    path_.substr(0, path_.size() - 1).c_str()) != 0)
        return Fail(path_, std::strerror(errno));
    staging_.clear();
    return true;
}

}  // namespace convert
