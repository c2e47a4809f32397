// Finding and telling other copies: one datagram socket for each, in a folder that only this user can enter.
#include "host/desktop/copies.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "host/desktop/copy_folder.h"
#include "host/desktop/copy_message.h"
#include "host/desktop/inbox.h"
#include "host/desktop/log.h"

namespace host {
namespace desktop {
namespace {

constexpr int kLongestWait = 1000;  // milliseconds for room in another copy's queue

struct Announced {
    int socket = -1;
    uint64_t id = 0;
    Inbox* inbox = nullptr;
};

Announced g_announced;
char g_socket_path[sizeof(
    sockaddr_un::sun_path)];  // for the signal handler: empty when there is nothing to remove
char g_folder_path[sizeof(sockaddr_un::sun_path)];

bool MakeAddress(const std::string& path, sockaddr_un* address) {
    *address = sockaddr_un();
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof(address->sun_path)) return false;
    std::memcpy(address->sun_path, path.c_str(), path.size() + 1);
    return true;
}

int NewSocket() {
    return socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

// A socket that sends to path, -1 when nobody receives there. *dead: the file is left over from a process
// that is gone.
int ConnectTo(const std::string& path, bool* dead) {
    *dead = false;
    sockaddr_un address;
    const int fd = NewSocket();
    if (fd < 0) return -1;
    if (MakeAddress(path, &address) &&
        connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
        return fd;
    }
    *dead = errno == ECONNREFUSED;
    close(fd);
    return -1;
}

// Keeps others from sweeping and announcing at the same moment. A copy that was stopped while it held this
// must not stop the rest, so it is only waited for a little.
class FolderLock {
public:
    explicit FolderLock(const std::string& path)
        : m_fd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        for (int tries = 0; m_fd >= 0 && !m_held && tries < 50; ++tries) {
            m_held = flock(m_fd, LOCK_EX | LOCK_NB) == 0;
            if (!m_held) usleep(1000);
        }
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    ~FolderLock() {
        if (m_fd >= 0) close(m_fd);
    }
    bool held() const { return m_held; }

private:
    int m_fd;
    bool m_held = false;
};

// Removes the file of a copy that is gone, unless a new one has taken its name meanwhile.
void Sweep(const std::string& folder, const std::string& path) {
    FolderLock lock(folder);
    if (!lock.held()) return;
    bool dead;
    const int fd = ConnectTo(path, &dead);
    if (fd >= 0) close(fd);
    if (dead) unlink(path.c_str());
}

// Binds under the first free number whose low half is the process id.
bool BindIn(const std::string& folder, const std::string& class_name, int fd, CopySocket* own) {
    FolderLock lock(folder);
    own->class_name = class_name;
    for (uint64_t k = 0; k < 16; ++k) {
        own->id = k << 32 | static_cast<uint32_t>(getpid());
        const std::string path = folder + "/" + SocketName(*own);
        sockaddr_un address;
        if (!MakeAddress(path, &address)) return false;
        bool dead;
        const int other = ConnectTo(path, &dead);
        if (other >= 0) close(other);
        if (dead) unlink(path.c_str());
        if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
            std::strcpy(g_folder_path, folder.c_str());
            std::strcpy(g_socket_path, path.c_str());
            return true;
        }
        if (errno != EADDRINUSE) return false;
    }
    return false;
}

void RemoveFiles() {
    if (g_socket_path[0]) unlink(g_socket_path);
    if (g_folder_path[0]) rmdir(g_folder_path);  // only when nobody else is in it
    g_socket_path[0] = g_folder_path[0] = 0;
}

void RemoveAndDie(int number) {
    RemoveFiles();
    signal(number, SIG_DFL);
    raise(number);
}

void RemoveAtEnd() {
    static bool done = false;
    if (done) return;
    done = true;
    std::atexit(WithdrawCopy);
    for (int number : {SIGINT, SIGTERM, SIGHUP}) {
        if (signal(number, RemoveAndDie) == SIG_IGN) signal(number, SIG_IGN);
    }
}

std::string FindPath(uint64_t id) {
    const CopyFolder folder = FindCopyFolder(false);
    if (!folder.usable) return "";
    for (const CopySocket& socket : ReadCopyFolder(folder.path)) {
        if (socket.id == id) return folder.path + "/" + SocketName(socket);
    }
    return "";
}

}  // namespace

bool TakePosted(Event* event) {
    if (!g_announced.inbox || !g_announced.inbox->Take(event)) return false;
    Log("host: message " + std::to_string(event->message) + " " + std::to_string(event->wparam) + " " +
        std::to_string(event->lparam) + "\n");
    return true;
}

bool PostedWaits() {
    return g_announced.inbox && g_announced.inbox->Waits();
}

void EndPostedRound() {
    if (g_announced.inbox) g_announced.inbox->EndRound();
}

int PostedSignal() {
    return g_announced.inbox ? g_announced.inbox->signal() : -1;
}

void ClearPostedSignal() {
    if (g_announced.inbox) g_announced.inbox->ClearSignal();
}

void WaitPosted(int milliseconds) {
    pollfd wait = {PostedSignal(), POLLIN, 0};  // an fd of -1 is passed over: a plain sleep
    poll(&wait, 1, milliseconds);
    ClearPostedSignal();
}

}  // namespace desktop

using namespace desktop;

bool AnnounceCopy(const std::string& class_name) {
    WithdrawCopy();
    const int fd = NewSocket();
    if (fd < 0) return false;
    // Before the name can be found, so that no message comes without its sender's credentials.
    const int on = 1;
    CopySocket own;
    bool bound = false;
    if (setsockopt(fd, SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)) != 0) {
        close(fd);
        return false;
    }
    // The last of the others may take the empty folder away just now: then it is made anew.
    for (int tries = 0; tries < 8 && !bound; ++tries) {
        const CopyFolder folder = FindCopyFolder(true);
        if (!folder.usable) {
            Log("host: " + folder.problem + ": other copies will not find this one\n");
            break;
        }
        bound = BindIn(folder.path, class_name, fd, &own);
        if (!bound && errno != ENOENT) {
            Log("host: no socket in " + folder.path + ": " + std::strerror(errno) + "\n");
            break;
        }
    }
    if (!bound) {
        close(fd);
        return false;
    }
    g_announced.socket = fd;
    g_announced.id = own.id;
    g_announced.inbox = new Inbox(fd);
    RemoveAtEnd();
    return true;
}

void WithdrawCopy() {
    if (g_announced.socket < 0) return;
    RemoveFiles();
    delete g_announced.inbox;
    close(g_announced.socket);
    g_announced = Announced();
}

bool ListCopies(std::vector<Copy>* copies) {
    copies->clear();
    const CopyFolder folder = FindCopyFolder(false);
    if (!folder.usable) {
        if (!folder.missing) Log("host: " + folder.problem + ": other copies are not looked for\n");
        return folder.missing;
    }
    for (const CopySocket& socket : ReadCopyFolder(folder.path)) {
        if (socket.id == g_announced.id) continue;
        const std::string path = folder.path + "/" + SocketName(socket);
        bool dead;
        const int fd = ConnectTo(path, &dead);
        if (fd >= 0) {
            close(fd);
            copies->push_back({socket.id, socket.class_name});
        } else if (dead) {
            Sweep(folder.path, path);
        }
    }
    return true;
}

bool PostToCopy(uint64_t id, uint32_t message, int64_t wparam, int64_t lparam) {
    const std::string path = FindPath(id);
    bool dead;
    const int fd = path.empty() ? -1 : ConnectTo(path, &dead);
    if (fd < 0) return false;
    uint8_t bytes[kCopyMessageBytes];
    EncodeCopyMessage({message, wparam, lparam}, bytes);
    const uint64_t start = Nanoseconds();
    ssize_t sent;
    while ((sent = send(fd, bytes, sizeof(bytes), MSG_NOSIGNAL)) < 0 && (errno == EAGAIN || errno == EINTR)) {
        const int left = kLongestWait - static_cast<int>((Nanoseconds() - start) / 1000000);
        pollfd wait = {fd, POLLOUT, 0};
        if (left <= 0) break;
        poll(&wait, 1, left);
    }
    close(fd);
    return sent == static_cast<ssize_t>(sizeof(bytes));
}

}  // namespace host
