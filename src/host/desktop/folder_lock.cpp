#include "host/desktop/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/desktop/instance_folder.h"
#include "host/host.h"

namespace host {
namespace desktop {
namespace {

constexpr int kFolderPatience = 50, kStartPatience = 200;  // ms

int g_start = -1;  // the folder, locked; -1 while this process holds no lock of starts
std::string g_start_folder;

int OpenFolder(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

bool TryLock(int fd) {
    return fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) == 0;
}

// An instance that ends removes an empty folder, and with it what others have locked there.
bool IsStill(int fd, const std::string& path) {
    struct stat held, now;
    return fstat(fd, &held) == 0 && stat(path.c_str(), &now) == 0 && held.st_ino == now.st_ino;
}

bool TryStart(bool create) {
    const InstanceFolder folder = FindInstanceFolder(create);
    if (!folder.usable) return true;  // nobody to wait for
    const int fd = OpenFolder(folder.path);
    if (TryLock(fd) && IsStill(fd, folder.path)) {
        g_start = fd;
        g_start_folder = folder.path;
        return true;
    }
    if (fd >= 0) close(fd);
    return false;
}

}  // namespace

FolderLock::FolderLock(const std::string& path) : m_held(g_start >= 0) {
    if (m_held) return;
    m_fd = OpenFolder(path);
    for (int tries = 0; m_fd >= 0 && !m_held && tries < kFolderPatience; ++tries) {
        m_held = TryLock(m_fd);
        if (!m_held) usleep(1000);
    }
}

FolderLock::~FolderLock() {
    if (m_fd >= 0) close(m_fd);
}

}  // namespace desktop

using namespace desktop;

void LockStart(bool create) {
    if (g_start >= 0) return;
    const uint64_t end = Nanoseconds() + uint64_t{kStartPatience} * 1'000'000;
    while (!TryStart(create) && Nanoseconds() < end) usleep(1000);
}

void LeaveStartToChild() {
    if (g_start >= 0) close(g_start);
    g_start = -1;
}

void UnlockStart() {
    if (g_start < 0) return;
    rmdir(g_start_folder.c_str());  // fails while an instance is in it
    close(g_start);
    g_start = -1;
}

}  // namespace host
