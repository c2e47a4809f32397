#include "xa/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace xa {
namespace {

bool Fail(std::string* why, const char* what = nullptr) {
    *why = what ? what : std::strerror(errno);
    return false;
}

// Where a link leads, so that the link stays; the path itself when there is nothing yet.
std::string Resolve(const std::string& path) {
    std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real ? std::string(real.get()) : path;
}

}  // namespace

bool ReadFile(const std::string& path, uint64_t limit, std::vector<uint8_t>* bytes, std::string* why) {
    std::unique_ptr<FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) return Fail(why);
    bytes->clear();
    uint8_t chunk[65536];
    size_t count = 0;
    while ((count = std::fread(chunk, 1, sizeof chunk, file.get())) > 0) {
        if (bytes->size() + count > limit) return Fail(why, "the file is too large");
        bytes->insert(bytes->end(), chunk, chunk + count);
    }
    return std::ferror(file.get()) ? Fail(why) : true;
}

PendingFile::~PendingFile() {
    if (fd_ >= 0) close(fd_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

bool PendingFile::Open(const std::string& path, std::string* why) {
    target_ = Resolve(path);
    struct stat status = {};
    mode_t mode = 0;
    if (stat(target_.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode)) return Fail(why, "not a regular file");
        mode = status.st_mode & 0777;
    } else {
        mode_t mask = umask(0);
        umask(mask);
        mode = 0666 & ~mask;
    }
    std::string name = target_ + ".XXXXXX";
    fd_ = mkstemp(name.data());
    if (fd_ < 0) return Fail(why);
    temporary_ = name;
    return fchmod(fd_, mode) == 0 ? true : Fail(why);
}

bool PendingFile::Write(const void* bytes, size_t count, std::string* why) {
    const auto* at = static_cast<const uint8_t*>(bytes);
    while (count > 0) {
        ssize_t written = write(fd_, at, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return Fail(why);
        at += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

bool PendingFile::Commit(std::string* why) {
    if (fsync(fd_) != 0 && errno != EINVAL && errno != EROFS) return Fail(why);
    int result = close(fd_);
    fd_ = -1;
    if (result != 0) return Fail(why);
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) return Fail(why);
    temporary_.clear();
    return true;
}

}  // namespace xa
