#include "common/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include "common/output_rules.h"
#include "common/signals.h"

namespace tools {
namespace {

constexpr size_t kBuffer = 1 << 16;

mode_t ReadMask() {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

// Read before there are threads: reading it takes it away for a moment, for what others make meanwhile.
const mode_t g_mask = ReadMask();

std::string TemporaryFolder() {
    const char* folder = std::getenv("TMPDIR");
    return folder && *folder ? folder : "/tmp";
}

}  // namespace

Output::~Output() {
    if (fd_ >= 0 && owned_) close(fd_);
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
    struct stat status = {};
    if (name == "-") {
        fd_ = STDOUT_FILENO;
        return true;
    }
    if (stat(name.c_str(), &status) != 0 || S_ISREG(status.st_mode)) return CreateBeside(FollowLinks(name));
    // Opening a folder for writing fails; opening a pipe waits for its reader.
    owned_ = true;
    fd_ = open(name.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    return fd_ >= 0 || Fail();
}

bool Output::OpenForProgram(const std::string& name) {
    name_ = name;
    struct stat status = {};
    in_place_ = stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
    if (in_place_ && S_ISDIR(status.st_mode)) return errno = EISDIR, Fail();
    return CreateBeside(in_place_ ? TemporaryFolder() + "/output" : FollowLinks(name));
}

void Output::OpenDescriptor(int fd) {
    name_ = "temporary file";
    fd_ = fd;
    seekable_ = true;
}

bool Output::CreateBeside(const std::string& target) {
    if (std::filesystem::is_symlink(target)) return errno = ELOOP, Fail();  // FollowLinks has given up
    target_ = target;
    seekable_ = owned_ = true;
    struct stat status = {};
    const bool exists = stat(target.c_str(), &status) == 0;
    if (exists && access(target.c_str(), W_OK) != 0) return Fail();
    // Known before it is made: whatever fails from there on, it goes with this object.
    temporary_ = target.substr(0, target.rfind('/') + 1) + ".lumetra-XXXXXX";
    fd_ = mkostemp(temporary_.data(), O_CLOEXEC);
    if (fd_ < 0) return temporary_.clear(), Fail();
    if (exists && fchown(fd_, status.st_uid, status.st_gid) != 0 && errno != EPERM) return Fail();
    return fchmod(fd_, exists ? status.st_mode & 0777 : ModeOfNew(0666)) == 0 || Fail();
}

bool Output::WriteThrough(int fd, const char* bytes, size_t count) {
    while (count > 0) {
        const ssize_t written = write(fd, bytes, count);
        if (written < 0 && errno == EINTR && !Stopped()) continue;
        if (written < 0) return Fail();
        bytes += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

bool Output::Flush() {
    const bool good = WriteThrough(fd_, buffer_.data(), buffer_.size());
    buffer_.clear();
    return good;
}

bool Output::Write(const void* bytes, size_t count) {
    const char* at = static_cast<const char*>(bytes);
    if (count >= kBuffer) return Flush() && WriteThrough(fd_, at, count);
    buffer_.insert(buffer_.end(), at, at + count);
    return buffer_.size() < kBuffer || Flush();
}

bool Output::WriteZeros(uint64_t count) {
    constexpr uint64_t kLeastHole = 65536;
    if (seekable_ && count >= kLeastHole) {
        hole_ = true;
        return Flush() && (lseek(fd_, static_cast<off_t>(count), SEEK_CUR) >= 0 || Fail());
    }
    const char zeros[4096] = {};
    for (uint64_t left = count; left > 0; left -= std::min<uint64_t>(left, sizeof zeros)) {
        if (!Write(zeros, static_cast<size_t>(std::min<uint64_t>(left, sizeof zeros)))) return false;
    }
    return true;
}

// The file gets its length where it ends in a hole.
bool Output::CloseHole() {
    if (!hole_) return true;
    hole_ = false;
    struct stat status = {};
    const off_t place = lseek(fd_, 0, SEEK_CUR);
    return place >= 0 && fstat(fd_, &status) == 0 && (status.st_size >= place || ftruncate(fd_, place) == 0)
               ? true
               : Fail();
}

bool Output::Seek(int64_t place) {
    return Flush() && CloseHole() && (lseek(fd_, place, SEEK_SET) == place || Fail());
}

bool Output::Sync() {
    return Flush() && (fsync(fd_) == 0 || errno == EINVAL || Fail());  // a pipe has nothing to wait for
}

bool Output::CopyTo(int to) {
    char chunk[kBuffer];
    for (;;) {
        const ssize_t count = read(fd_, chunk, sizeof chunk);
        if (count == 0) return true;
        if (count < 0 || !WriteThrough(to, chunk, static_cast<size_t>(count))) return count >= 0 || Fail();
    }
}

bool Output::Commit() {
    if (!Flush() || !CloseHole()) return false;
    if (Stopped()) return Fail("stopped");
    if (in_place_) {
        Output place;
        const bool copied = place.Open(name_) && CopyTo(place.fd_) && place.Commit();
        return copied || (place.error_.empty() ? false : (error_ = place.error_, false));
    }
    if (!owned_) return true;
    const int closed = close(fd_);
    fd_ = -1;
    if (closed != 0) return Fail();
    if (temporary_.empty()) return true;
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) return Fail();
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

mode_t ModeOfNew(mode_t most) {
    return most & ~g_mask;
}

int OpenScratchFile() {
    std::string path = TemporaryFolder() + "/lumetra-XXXXXX";
    const int fd = mkostemp(path.data(), O_CLOEXEC);
    if (fd >= 0) unlink(path.c_str());
    return fd;
}

}  // namespace tools
