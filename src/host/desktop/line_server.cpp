#include "host/desktop/line_server.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

namespace host {
namespace desktop {
namespace {

constexpr size_t kMaxClients = 16, kMaxLine = 65536, kMaxUnread = 262144;  // bytes
constexpr int kRest = 100;                                                 // ms

bool MakeAddress(const std::string& path, sockaddr_un* address) {
    *address = sockaddr_un();
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof(address->sun_path)) return false;
    std::memcpy(address->sun_path, path.c_str(), path.size() + 1);
    return true;
}

// The kernel's word, not the other process's.
bool IsOurUser(int fd) {
    ucred peer;
    socklen_t size = sizeof(peer);
    return getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

}  // namespace

int ListenAt(const std::string& path) {
    sockaddr_un address;
    if (!MakeAddress(path, &address)) return -1;
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0) return -1;
    unlink(path.c_str());  // left over: the datagram socket of that name has just been taken
    if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 && listen(fd, 64) == 0)
        return fd;
    close(fd);
    return -1;
}

LineServer::LineServer(int listener, LineHandler handler) : m_listener(listener), m_handler(handler) {
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0) m_pipe[0] = m_pipe[1] = -1;
}

void LineServer::Start() {
    // Signals go to the main thread.
    sigset_t all, old;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &old);
    m_thread = std::thread([this] { Run(); });
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
}

LineServer::~LineServer() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
    }
    Wake();
    if (m_thread.joinable()) m_thread.join();
    for (const Client& client : m_clients) close(client.fd);
    close(m_listener);
    for (const int end : m_pipe) {
        if (end >= 0) close(end);
    }
}

void LineServer::Wake() {
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(m_pipe[1], &byte, 1);  // a full pipe wakes anyway
}

void LineServer::Run() {
    std::vector<pollfd> waits;
    std::vector<Client*> clients;
    for (;;) {
        // poll skips a descriptor of -1.
        waits.assign({{m_pipe[0], POLLIN, 0}, {m_resting ? -1 : m_listener, POLLIN, 0}});
        clients.clear();
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_stop) return;
            for (Client& client : m_clients) {
                waits.push_back(
                    {client.fd, static_cast<short>(client.out.empty() ? POLLIN : POLLIN | POLLOUT), 0});
                clients.push_back(&client);
            }
        }
        const bool rested = poll(waits.data(), waits.size(), m_resting ? kRest : -1) == 0;
        char bytes[64];
        while (read(m_pipe[0], bytes, sizeof(bytes)) > 0) {
        }
        for (size_t i = 0; i < clients.size(); ++i) {
            if (waits[i + 2].revents & (POLLIN | POLLHUP | POLLERR)) Read(clients[i]);
            const std::lock_guard<std::mutex> lock(m_mutex);
            Flush(clients[i]);
        }
        if (waits[1].revents || rested) Accept();
        Sweep();
    }
}

// Without a free descriptor the next client would stay in the queue and wake the thread at once, for ever.
void LineServer::Accept() {
    for (int fd; (fd = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)) >= 0;) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_clients.size() < kMaxClients && IsOurUser(fd)) {
            m_clients.push_back({m_next_id++, fd, "", ""});
        } else {
            close(fd);
        }
    }
    m_resting = errno != EAGAIN && errno != EINTR && errno != ECONNABORTED;
}

void LineServer::Read(Client* client) {
    char bytes[4096];
    const ssize_t count = recv(client->fd, bytes, sizeof(bytes), 0);
    bool gone = count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
    if (count > 0) client->in.append(bytes, static_cast<size_t>(count));
    for (size_t end; (end = client->in.find('\n')) != std::string::npos;) {
        const std::string line = client->in.substr(0, end);
        client->in.erase(0, end + 1);
        m_handler(client->id, line);
    }
    gone = gone || client->in.size() > kMaxLine;
    const std::lock_guard<std::mutex> lock(m_mutex);
    client->gone = client->gone || gone;
}

void LineServer::Flush(Client* client) {
    while (!client->out.empty() && !client->gone) {
        const ssize_t count = send(client->fd, client->out.data(), client->out.size(), MSG_NOSIGNAL);
        if (count < 0) {
            client->gone = errno != EAGAIN && errno != EINTR;
            return;
        }
        client->out.erase(0, static_cast<size_t>(count));
    }
}

void LineServer::Sweep() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_clients.remove_if([](const Client& client) {
        if (client.gone) close(client.fd);
        return client.gone;
    });
}

bool LineServer::Send(uint64_t id, const std::string& line) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto at = std::find_if(m_clients.begin(), m_clients.end(),
                                 [id](const Client& client) { return client.id == id; });
    if (at == m_clients.end() || at->gone) return false;
    at->out += line + "\n";
    Flush(&*at);
    if (at->out.size() > kMaxUnread) at->gone = true;  // it does not read
    if (!at->out.empty() || at->gone) Wake();
    return !at->gone;
}

}  // namespace desktop
}  // namespace host
