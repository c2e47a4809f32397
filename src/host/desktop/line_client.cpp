// The other end of an instance's second channel.
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/desktop/instances.h"
#include "host/host.h"

namespace host {

namespace {

constexpr uint64_t kPatience = 200'000'000;  // ns

// A connected socket, -1 on failure. A stopped instance accepts nothing; its backlog takes a few, and then
// this fails after the patience.
int Connect(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof(address.sun_path)) return -1;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const timeval limit = {0, kPatience / 1000};
    if (fd >= 0) setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
    if (fd >= 0 && connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) return fd;
    if (fd >= 0) close(fd);
    return -1;
}

}  // namespace

// An instance that has just been announced opens its channel a moment later.
LineClient::LineClient(uint64_t id) {
    const uint64_t end = Nanoseconds() + kPatience;
    for (;;) {
        const std::string path = desktop::ChannelPath(id);
        m_fd = Connect(path);
        if (m_fd >= 0 || path.empty() || Nanoseconds() >= end) return;
        usleep(1000);
    }
}

LineClient::~LineClient() {
    Close();
}

void LineClient::Close() {
    if (m_fd >= 0) close(m_fd);
    m_fd = -1;
}

bool LineClient::Write(const std::string& line) {
    const std::string bytes = line + "\n";
    return m_fd >= 0 &&
           send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

bool LineClient::Read(std::string* line, int milliseconds) {
    const uint64_t end = Nanoseconds() + static_cast<uint64_t>(milliseconds) * 1'000'000;
    for (size_t at; (at = m_in.find('\n')) == std::string::npos;) {
        const uint64_t now = Nanoseconds();
        pollfd wait = {m_fd, POLLIN, 0};
        if (m_fd < 0 || now >= end || poll(&wait, 1, static_cast<int>((end - now) / 1'000'000) + 1) == 0)
            return false;
        char bytes[4096];
        const ssize_t count = recv(m_fd, bytes, sizeof(bytes), 0);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) {
            Close();
            return false;
        }
        m_in.append(bytes, static_cast<size_t>(count));
    }
    const size_t at = m_in.find('\n');
    *line = m_in.substr(0, at);
    m_in.erase(0, at + 1);
    return true;
}

}  // namespace host
