// The folder that a package is written to. It changes at once, and only when the package is complete.
#pragma once

#include <mutex>
#include <set>
#include <string>

namespace convert {

constexpr char kManifest[] = ".lumetra-convert";

// Names of files are relative, with `/`; they must not be hostile (IsSafe). Operations return false when they
// fail; error() then says why.
class PackageFolder {
public:
    PackageFolder() = default;
    ~PackageFolder();  // removes what Commit did not bring to its place
    PackageFolder(const PackageFolder&) = delete;
    PackageFolder& operator=(const PackageFolder&) = delete;

    // Whether the folder is absent, empty, or holds nothing but what its manifest lists.
    bool Check(const std::string& folder);
    // The folder itself, absolute and without symbolic links, with a closing `/`. After Check.
    const std::string& path() const { return path_; }

    bool Begin();  // makes the folder in which files are collected, beside the one that is wanted
    // Each adds a file. Safe on several threads.
    bool Write(const std::string& name, const void* bytes, size_t size);
    bool Link(const std::string& name, const std::string& target);  // target: absolute; the link is relative
    bool Copy(const std::string& name, const std::string& source);
    bool Commit();  // writes the manifest and puts the package in its place
    const std::string& error() const { return error_; }

private:
    bool Place(const std::string& name, std::string* path);
    bool Fail(const std::string& name, const std::string& why);
    bool Exchange();

    std::string path_, staging_, error_;
    bool replaces_ = false;        // there is a package
    std::set<std::string> names_;  // of the new package
    std::mutex mutex_;             // for names_ and error_
};

// A relative name that stays within the folder and is not the manifest's.
bool IsSafe(const std::string& name);

}  // namespace convert
