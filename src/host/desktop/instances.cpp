// Finding other instances and posting to them: each has one datagram socket, in a folder that only this user
// can enter.
#include "host/desktop/instances.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "host/desktop/folder_lock.h"
#include "host/desktop/inbox.h"
#include "host/desktop/instance_folder.h"
#include "host/desktop/instance_message.h"
#include "host/desktop/line_server.h"
#include "host/desktop/log.h"

namespace host {
namespace desktop {
namespace {

// Of a process, in all: for room in another instance's queue, and for one that was told to end to do so.
constexpr uint64_t kLongestWait = 200'000'000;  // ns
constexpr char kChannel[] = ".stream";          // after the name of the datagram socket

struct Announced {
    int socket = -1;
    uint64_t id = 0;
    Inbox* inbox = nullptr;
    LineServer* lines = nullptr;
};

Announced g_announced;
bool g_deaf = false;
bool g_refused = false;  // a message of this process
uint64_t g_waited = 0;   // ns of kLongestWait that are used up
LineHandler g_handler = nullptr;
// For the signal handler: empty when there is nothing to remove.
char g_socket_path[sizeof(sockaddr_un::sun_path)];
char g_channel_path[sizeof(sockaddr_un::sun_path) + sizeof(kChannel)];
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

// A socket that sends to path, -1 when nobody receives there. *dead: the process that bound it is gone.
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

// Removes the socket of an instance that is gone, unless a new one has taken its name meanwhile.
void Sweep(const std::string& folder, const std::string& path) {
    FolderLock lock(folder);
    if (!lock.held()) return;
    bool dead;
    const int fd = ConnectTo(path, &dead);
    if (fd >= 0) close(fd);
    if (!dead) return;
    unlink(path.c_str());
    unlink((path + kChannel).c_str());
}

// Binds under the first free number whose low half is the process id.
bool BindIn(const std::string& folder, const std::string& class_name, int fd, InstanceSocket* own) {
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
            std::strcpy(g_channel_path, (path + kChannel).c_str());
            return true;
        }
        if (errno != EADDRINUSE) return false;
    }
    return false;
}

// Also on the inbox's thread, at a quit; what is gone twice does no harm.
void RemoveFiles() {
    if (g_socket_path[0]) unlink(g_socket_path);
    if (g_channel_path[0]) unlink(g_channel_path);
    // Fails while another instance is in it. One that is starting has locked it and is not in it yet.
    const int folder = g_folder_path[0] ? open(g_folder_path, O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
    if (folder >= 0 && flock(folder, LOCK_EX | LOCK_NB) == 0) rmdir(g_folder_path);
    if (folder >= 0) close(folder);
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
    std::atexit(WithdrawInstance);
    for (int number : {SIGINT, SIGTERM, SIGHUP}) {
        if (signal(number, RemoveAndDie) == SIG_IGN) signal(number, SIG_IGN);
    }
}

// False when the process has waited in vain for long enough, for this and for others.
template <class Condition>
bool WaitFor(Condition condition) {
    const uint64_t start = Nanoseconds();
    bool met = condition();
    for (; !met && g_waited + (Nanoseconds() - start) < kLongestWait; met = condition()) usleep(500);
    if (!met) g_waited += Nanoseconds() - start;
    return met;
}

std::string FindPath(uint64_t id) {
    const InstanceFolder folder = FindInstanceFolder(false);
    if (!folder.usable) return "";
    for (const InstanceSocket& socket : ReadInstanceFolder(folder.path)) {
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

std::string ChannelPath(uint64_t id) {
    const std::string path = FindPath(id);
    return path.empty() ? "" : path + kChannel;
}

int PostedSignal() {
    return g_announced.inbox ? g_announced.inbox->signal() : -1;
}

void ClearPostedSignal() {
    if (g_announced.inbox) g_announced.inbox->ClearSignal();
}

void WaitPosted(int milliseconds) {
    pollfd wait = {PostedSignal(), POLLIN, 0};  // poll skips an fd of -1: a plain sleep
    poll(&wait, 1, milliseconds);
    ClearPostedSignal();
}

}  // namespace desktop

using namespace desktop;

bool AnnounceInstance(const std::string& class_name) {
    WithdrawInstance();
    const int fd = NewSocket();
    if (fd < 0) return false;
    // Set before the socket has a name, so that every message carries its sender's credentials.
    const int on = 1;
    InstanceSocket own;
    bool bound = false;
    if (setsockopt(fd, SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)) != 0) {
        close(fd);
        return false;
    }
    // Another instance may remove the empty folder just now: then it is created again.
    for (int tries = 0; tries < 8 && !bound; ++tries) {
        const InstanceFolder folder = FindInstanceFolder(true);
        if (!folder.usable) {
            Log("host: " + folder.problem + ": other instances will not find this one\n");
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
    g_announced.inbox = new Inbox(fd, RemoveFiles);
    if (g_deaf) g_announced.inbox->SetDeaf();
    const int listener = g_handler ? ListenAt(g_channel_path) : -1;
    if (listener >= 0) g_announced.lines = new LineServer(listener, g_handler);
    if (listener >= 0) g_announced.lines->Start();
    RemoveAtEnd();
    UnlockStart();
    return true;
}

void WithdrawInstance() {
    if (g_announced.socket < 0) return;
    RemoveFiles();
    delete g_announced.inbox;  // whose thread reads the paths
    delete g_announced.lines;
    g_socket_path[0] = g_channel_path[0] = g_folder_path[0] = 0;
    close(g_announced.socket);
    g_announced = Announced();
    g_deaf = false;  // the next one begins anew
    g_waited = 0;
}

bool ListInstances(std::vector<Instance>* instances) {
    instances->clear();
    const InstanceFolder folder = FindInstanceFolder(false);
    if (!folder.usable) {
        if (!folder.missing) Log("host: " + folder.problem + ": other instances are not looked for\n");
        return folder.missing;
    }
    for (const InstanceSocket& socket : ReadInstanceFolder(folder.path)) {
        if (socket.id == g_announced.id) continue;
        const std::string path = folder.path + "/" + SocketName(socket);
        bool dead;
        const int fd = ConnectTo(path, &dead);
        if (fd >= 0) {
            close(fd);
            instances->push_back({socket.id, socket.class_name});
        } else if (dead) {
            Sweep(folder.path, path);
        }
    }
    return true;
}

bool PostToInstance(uint64_t id, uint32_t message, int64_t wparam, int64_t lparam) {
    const std::string path = FindPath(id);
    bool dead;
    const int fd = path.empty() ? -1 : ConnectTo(path, &dead);
    if (fd < 0) return false;
    uint8_t bytes[kInstanceMessageBytes];
    EncodeInstanceMessage({message, wparam, lparam}, bytes);
    ssize_t count = -1;
    WaitFor([&] {
        count = send(fd, bytes, sizeof(bytes), MSG_NOSIGNAL | MSG_DONTWAIT);
        return count >= 0 || (errno != EAGAIN && errno != EINTR);
    });
    const bool sent = count == static_cast<ssize_t>(sizeof(bytes));
    close(fd);
    g_refused = g_refused || !sent;
    if (sent && message == kQuitMessage) WaitFor([&] { return access(path.c_str(), F_OK) != 0; });
    return sent;
}

bool PostWasRefused() {
    return g_refused;
}

void ServeLines(LineHandler handler) {
    g_handler = handler;
}

bool SendLine(uint64_t client, const std::string& line) {
    return g_announced.lines && g_announced.lines->Send(client, line);
}

void LeaveList() {
    RemoveFiles();
}

void SetDeaf() {
    g_deaf = true;
    if (g_announced.inbox) g_announced.inbox->SetDeaf();
}

}  // namespace host
