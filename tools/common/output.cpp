#include "common/output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "common/signals.h"

namespace tools {
namespace {

constexpr size_t kBuffer = 1 << 16;

// Where a link leads, so that the link stays; the path itself when there is nothing yet.
std::string Resolve(const std::string& path) {
    std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real ? std::string(real.get()) : path;
}

mode_t ModeOfNewFiles() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

Output::~Output() {
    if (fd_ >= 0 && fd_ != STDOUT_FILENO) close(fd_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

bool Output::Fail(const char* why) {
    error_ =
        (name_ == "-" ? "standard output" : name_) + ": cannot write: " + (why ? why : std::strerror(errno));
    return false;
}

bool Output::Open(const std::string& name) {
    name_ = name;
    buffer_.reserve(kBuffer);
    if (seekable()) return Create();
    fd_ = STDOUT_FILENO;
    return true;
}

bool Output::Create() {
    target_ = Resolve(name_);
    struct stat status = {};
    const bool exists = stat(target_.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) return Fail("not a regular file");
    std::string path = target_ + ".XXXXXX";
    fd_ = mkstemp(path.data());
    if (fd_ < 0) return Fail();
    temporary_ = path;
    return fchmod(fd_, exists ? status.st_mode & 0777 : ModeOfNewFiles()) == 0 || Fail();
}

bool Output::WriteThrough(const char* bytes, size_t count) {
    while (count > 0) {
        const ssize_t written = write(fd_, bytes, count);
        if (written < 0 && errno == EINTR && !Stopped()) continue;
        if (written < 0) return Fail();
        bytes += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

bool Output::Flush() {
    const bool good = WriteThrough(buffer_.data(), buffer_.size());
    buffer_.clear();
    return good;
}

bool Output::Write(const void* bytes, size_t count) {
    const char* at = static_cast<const char*>(bytes);
    if (count >= kBuffer) return Flush() && WriteThrough(at, count);
    buffer_.insert(buffer_.end(), at, at + count);
    return buffer_.size() < kBuffer || Flush();
}

bool Output::Rewrite(const void* bytes, size_t count) {
    if (!Flush()) return false;
    if (lseek(fd_, 0, SEEK_SET) != 0) return Fail();
    return WriteThrough(static_cast<const char*>(bytes), count);
}

bool Output::Commit() {
    if (!Flush()) return false;
    if (!seekable()) return true;
    const int closed = close(fd_);
    fd_ = -1;
    if (closed != 0 || std::rename(temporary_.c_str(), target_.c_str()) != 0) return Fail();
    temporary_.clear();
    return true;
}

bool ReadFile(const std::string& path, uint64_t limit, std::vector<uint8_t>* bytes, std::string* why) {
    const auto fail = [why](const char* text) { return *why = text, false; };
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) return fail(std::strerror(errno));
    bytes->clear();
    uint8_t chunk[65536];
    while (const size_t count = std::fread(chunk, 1, sizeof chunk, file.get())) {
        if (bytes->size() + count > limit) return fail("the file is too large");
        bytes->insert(bytes->end(), chunk, chunk + count);
    }
    return !std::ferror(file.get()) || fail(std::strerror(errno));
}

}  // namespace tools
