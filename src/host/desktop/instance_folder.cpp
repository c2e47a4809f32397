#include "host/desktop/instance_folder.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace host::desktop {
namespace {

bool IsPlain(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

// 0, or the error for which the folder does not exist and cannot be created.
int MakeFolder(const std::string& path) {
    return mkdir(path.c_str(), 0700) == 0 || errno == EEXIST ? 0 : errno;
}

bool Exists(const std::string& path) {
    struct stat info;
    return lstat(path.c_str(), &info) == 0;
}

// Goes one folder down the path; false when that one cannot be used, with the reason in *folder.
bool Enter(const std::string& path, bool create, InstanceFolder* folder) {
    folder->path = path;
    const int error = create ? MakeFolder(path) : 0;
    if (error != 0) folder->problem = "no folder " + path + ": " + std::strerror(error);
    if (error != 0) return false;
    if (IsPrivateFolder(path)) return true;
    folder->missing = !create && !Exists(path);
    if (!folder->missing) folder->problem = path + " is not a folder of this user alone";
    return false;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

bool IsPrivateFolder(const std::string& path) {
    struct stat info;
    if (lstat(path.c_str(), &info) != 0) return false;
    return S_ISDIR(info.st_mode) && info.st_uid == geteuid() && (info.st_mode & 077) == 0;
}

std::string DisplayKey(const char* display) {
    std::string name = display ? display : "";
    const size_t colon = name.rfind(':');
    if (colon != std::string::npos) {
        const size_t dot = name.find('.', colon);
        if (dot != std::string::npos) name.erase(dot);
        const std::string machine = name.substr(0, colon);
        if (machine.empty() || machine == "unix") name.erase(0, colon + 1);
    }
    for (char& c : name) {
        if (!IsPlain(static_cast<unsigned char>(c))) c = '_';
    }
    if (name.size() > 40) name.resize(40);
    return name.empty() ? "none" : name;
}

InstanceFolder FindInstanceFolder(bool create) {
    InstanceFolder folder;
    const std::string key = DisplayKey(std::getenv("DISPLAY"));
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    // A socket's whole path must fit in 107 bytes.
    if (runtime && runtime[0] == '/' && std::strlen(runtime) < 40 && IsPrivateFolder(runtime)) {
        folder.usable = Enter(std::string(runtime) + "/lumetra-" + key, create, &folder);
        return folder;
    }
    const std::string own = "/tmp/lumetra-" + std::to_string(geteuid());
    folder.usable = Enter(own, create, &folder) && Enter(own + "/" + key, create, &folder);
    return folder;
}

std::string SocketName(const InstanceSocket& socket) {
    static const char kHex[] = "0123456789ABCDEF";
    std::string name;
    for (unsigned char c : socket.class_name) {
        if (IsPlain(c)) {
            name += static_cast<char>(c);
        } else {
            name += {'%', kHex[c >> 4], kHex[c & 15]};
        }
    }
    return name + "." + std::to_string(socket.id);
}

bool ParseSocketName(const std::string& name, InstanceSocket* socket) {
    *socket = InstanceSocket();
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == name.size() || name.size() - dot > 20)
        return false;
    for (size_t i = dot + 1; i < name.size(); ++i) {
        if (name[i] < '0' || name[i] > '9') return false;
        socket->id = socket->id * 10 + static_cast<uint64_t>(name[i] - '0');
    }
    for (size_t i = 0; i < dot; ++i) {
        char c = name[i];
        if (c == '%') {
            const int high = i + 2 < dot ? HexDigit(name[i + 1]) : -1;
            const int low = i + 2 < dot ? HexDigit(name[i + 2]) : -1;
            if (high < 0 || low < 0) return false;
            c = static_cast<char>(high * 16 + low);
            i += 2;
        } else if (!IsPlain(static_cast<unsigned char>(c))) {
            return false;
        }
        socket->class_name += c;
    }
    return socket->id != 0;
}

std::vector<InstanceSocket> ReadInstanceFolder(const std::string& path) {
    std::vector<InstanceSocket> sockets;
    DIR* dir = opendir(path.c_str());
    if (!dir) return sockets;
    while (const dirent* entry = readdir(dir)) {
        InstanceSocket socket;
        if (ParseSocketName(entry->d_name, &socket)) sockets.push_back(socket);
    }
    closedir(dir);
    std::sort(sockets.begin(), sockets.end(),
              [](const InstanceSocket& a, const InstanceSocket& b) { return a.id < b.id; });
    return sockets;
}

}  // namespace host::desktop
