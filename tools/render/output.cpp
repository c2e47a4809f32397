#include "render/output.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "render/pass.h"

namespace render {
namespace {

constexpr size_t kBuffer = 1 << 16;

bool WriteAll(int fd, const char* at, size_t count) {
    while (count > 0) {
        const ssize_t written = write(fd, at, count);
        if (written < 0 && errno == EINTR && !Stopped()) continue;
        if (written < 0) return false;
        at += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

}  // namespace

bool Output::Fail(const std::string& why) const {
    Complain(kOutput, (name_ == "-" ? "standard output" : name_) + ": cannot write: " + why);
    return false;
}

bool Output::Open(const std::string& name) {
    name_ = name;
    buffer_.reserve(kBuffer);
    std::string why;
    return !seekable() || file_.Open(name, &why) || Fail(why);
}

bool Output::Flush() {
    std::string why;
    if (seekable()) {
        if (!file_.Write(buffer_.data(), buffer_.size(), &why)) return Fail(why);
    } else if (!WriteAll(STDOUT_FILENO, buffer_.data(), buffer_.size())) {
        return Fail(std::strerror(errno));
    }
    buffer_.clear();
    return true;
}

bool Output::Write(const void* bytes, size_t count) {
    const char* at = static_cast<const char*>(bytes);
    buffer_.insert(buffer_.end(), at, at + count);
    return buffer_.size() < kBuffer || Flush();
}

bool Output::Rewrite(const void* bytes, size_t count) {
    if (!Flush()) return false;
    if (lseek(file_.fd(), 0, SEEK_SET) != 0 || !WriteAll(file_.fd(), static_cast<const char*>(bytes), count))
        return Fail(std::strerror(errno));
    return true;
}

bool Output::Commit() {
    std::string why;
    return Flush() && (!seekable() || file_.Commit(&why) || Fail(why));
}

}  // namespace render
