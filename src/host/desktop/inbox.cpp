#include "host/desktop/inbox.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace host::desktop {
namespace {

// When the queue is full the rest stays in the socket, and senders wait for room there.
constexpr size_t kQueueBound = 10000;
constexpr size_t kRoundBound = 1000;
// A round also ends after this time, because in a dialog no frame ends it.
constexpr uint64_t kRoundNanoseconds = 10'000'000;

}  // namespace

bool IsFromThisUser(msghdr* header) {
    for (cmsghdr* part = CMSG_FIRSTHDR(header); part; part = CMSG_NXTHDR(header, part)) {
        if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_CREDENTIALS) continue;
        ucred sender;
        std::memcpy(&sender, CMSG_DATA(part), sizeof(sender));
        return sender.uid == geteuid();
    }
    return false;
}

Inbox::Inbox(int socket, void (*leave)()) : m_socket(socket), m_leave(leave) {
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0) m_pipe[0] = m_pipe[1] = -1;
    // Signals go to the main thread.
    sigset_t all, old;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &old);
    m_thread = std::thread([this] { Run(); });
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
}

Inbox::~Inbox() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
    }
    m_room.notify_all();
    shutdown(m_socket, SHUT_RDWR);
    m_thread.join();
    if (m_pipe[0] >= 0) close(m_pipe[0]);
    if (m_pipe[1] >= 0) close(m_pipe[1]);
}

void Inbox::Run() {
    for (;;) {
        pollfd wait = {m_socket, POLLIN, 0};
        poll(&wait, 1, -1);
        InstanceMessage message;
        const bool good = Receive(&message);
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_room.wait(lock, [this] { return m_stop || m_queue.size() < kQueueBound; });
            if (m_stop) return;
        }
        if (good) Keep(message);
    }
}

bool Inbox::Receive(InstanceMessage* message) {
    uint8_t bytes[kInstanceMessageBytes + 1];
    // Room for the credentials alone: file descriptors in a message do not fit and are never opened.
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))];
    iovec part = {bytes, sizeof(bytes)};
    msghdr header = {};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = control;
    header.msg_controllen = sizeof(control);
    const ssize_t count = recvmsg(m_socket, &header, MSG_DONTWAIT);
    if (count < 0 || (header.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) || !IsFromThisUser(&header)) return false;
    return DecodeInstanceMessage(bytes, static_cast<size_t>(count), message);
}

// A quit that will act takes the instance out of the list before anything else happens, so that the next
// start does not hand its chart to one that ends; what else waits is of no use any more.
void Inbox::Keep(const InstanceMessage& message) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_left) return;
    if (message.message == kHostMessage) m_deaf = true;
    if (message.message == kQuitMessage && !m_deaf) {
        m_left = true;
        m_leave();
        m_queue.clear();
        m_in_round = false;
    }
    m_queue.push_back(message);
    if (m_queue.size() == 1 && m_pipe[1] >= 0) {
        const char byte = 0;
        [[maybe_unused]] const ssize_t written =
            write(m_pipe[1], &byte, 1);  // a full pipe is readable anyway
    }
}

bool Inbox::OpenRound() {
    if (m_in_round && m_round_left == 0 && Nanoseconds() - m_round_start >= kRoundNanoseconds)
        m_in_round = false;
    if (!m_in_round && !m_queue.empty()) {
        m_in_round = true;
        m_round_left = std::min(m_queue.size(), kRoundBound);
        m_round_start = Nanoseconds();
    }
    return m_in_round && m_round_left > 0 && !m_queue.empty();
}

bool Inbox::Waits() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return OpenRound();
}

bool Inbox::Take(Event* event) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!OpenRound()) return false;
    --m_round_left;
    *event = Event();
    event->kind = EventKind::kPosted;
    event->message = m_queue.front().message;
    event->wparam = m_queue.front().wparam;
    event->lparam = m_queue.front().lparam;
    m_queue.pop_front();
    m_room.notify_one();
    return true;
}

void Inbox::SetDeaf() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_deaf = true;
}

void Inbox::EndRound() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_in_round = false;
}

void Inbox::ClearSignal() {
    char bytes[64];
    while (m_pipe[0] >= 0 && read(m_pipe[0], bytes, sizeof(bytes)) > 0) {
    }
}

}  // namespace host::desktop
