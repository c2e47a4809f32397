#include "platform/files/lookup.h"

#include <mutex>

#include <unistd.h>

#include "platform/files/handle.h"
#include "platform/files/pathmatch.h"
#include "platform/files/stream.h"

namespace {

std::mutex g_mutex;  // guards the caches behind pathmatch.h

}  // namespace

FileStream* OpenNamed(const std::string& name) {
    const auto tryOpen = [](const std::string& candidate, void* pUser) {
        FileStream* pFile = OpenStream(candidate);
        *static_cast<FileStream**>(pUser) = pFile;
        return pFile != nullptr;
    };
    FileStream* pFile = nullptr;
    const std::lock_guard lock(g_mutex);
    MatchPath(name, tryOpen, &pFile);
    return pFile;
}

std::string FindNamed(const std::string& name) {
    const auto tryFile = [](const std::string& candidate, void* pUser) {
        int64_t nSize = 0;
        const int nFile = OpenRegularFile(candidate.c_str(), &nSize);
        if (nFile < 0) return false;
        close(nFile);
        *static_cast<std::string*>(pUser) = candidate;
        return true;
    };
    std::string found;
    const std::lock_guard lock(g_mutex);
    MatchPath(name, tryFile, &found);
    return found;
}

std::vector<std::string> FindSiblings(std::string_view name, const std::vector<std::string_view>& endings) {
    const std::lock_guard lock(g_mutex);
    return SiblingPaths(name, endings);
}

void ForgetLookups() {
    const std::lock_guard lock(g_mutex);
    ForgetPaths();
}
