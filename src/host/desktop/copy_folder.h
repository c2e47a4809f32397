// The folder in which the copies of one user on one display find each other's sockets.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host::desktop {

struct CopyFolder {
    std::string path;      // without a closing slash
    bool usable = false;   // a real folder of this user's, closed to all others
    bool missing = false;  // not usable because there is none yet: nobody has announced himself
    std::string problem;   // one line for the log when neither
};

// $XDG_RUNTIME_DIR/lumetra-<display>, or /tmp/lumetra-<user>/<display> where that variable names no private
// folder. create: makes what is missing.
CopyFolder FindCopyFolder(bool create);

// ":0.0" and "unix:0" are one display, "0"; letters that a file name should not hold become `_`.
std::string DisplayKey(const char* display);

// Whether path is a folder, no link, owned by this user and closed to everybody else.
bool IsPrivateFolder(const std::string& path);

struct CopySocket {
    std::string class_name;
    uint64_t id = 0;
};

// "<class>.<id>"; bytes of the class other than letters, digits, `_` and `-` as %XX.
std::string SocketName(const CopySocket& socket);
bool ParseSocketName(const std::string& name, CopySocket* socket);

// The sockets in the folder, dead or alive, by id.
std::vector<CopySocket> ReadCopyFolder(const std::string& path);

}  // namespace host::desktop
