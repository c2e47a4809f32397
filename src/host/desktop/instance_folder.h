// The folder where the instances of one user on one display keep their sockets.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host::desktop {

struct InstanceFolder {
    std::string path;      // without a closing slash
    bool usable = false;   // a real folder, owned by this user and closed to everybody else
    bool missing = false;  // not usable because it does not exist: no instance is announced
    std::string problem;   // one line for the log when neither
};

// $XDG_RUNTIME_DIR/lumetra-<display>, or /tmp/lumetra-<user>/<display> when that variable does not name a
// private folder. create: creates what is missing.
InstanceFolder FindInstanceFolder(bool create);

// ":0.0" and "unix:0" are one display, "0". Bytes that do not belong in a file name become `_`.
std::string DisplayKey(const char* display);

// Whether path is a folder (not a link), owned by this user and closed to everybody else.
bool IsPrivateFolder(const std::string& path);

struct InstanceSocket {
    std::string class_name;
    uint64_t id = 0;
};

// "<class>.<id>"; bytes of the class other than letters, digits, `_` and `-` as %XX.
std::string SocketName(const InstanceSocket& socket);
bool ParseSocketName(const std::string& name, InstanceSocket* socket);

// The sockets in the folder, dead or alive, by id.
std::vector<InstanceSocket> ReadInstanceFolder(const std::string& path);

}  // namespace host::desktop
