// Locks on the instances' folder.
#pragma once

#include <string>

namespace host::desktop {

// Serialises sweeping and announcing. Waits 50 ms at most, so that an instance that was stopped while it held
// the lock does not block the others. Held at once by a process that holds the lock of starts.
class FolderLock {
public:
    explicit FolderLock(const std::string& path);
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    ~FolderLock();
    bool held() const { return m_held; }

private:
    int m_fd = -1;
    bool m_held = false;
};

}  // namespace host::desktop
