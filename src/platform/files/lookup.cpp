#include "platform/files/lookup.h"

#include <unistd.h>

#include <mutex>
#include <unordered_set>

#include "platform/files/handle.h"
#include "platform/files/pathmatch.h"
#include "platform/files/stream.h"

namespace {

struct Notes {
    bool bOn = false;
    std::unordered_set<std::string> found, missing;
};

std::mutex g_mutex;  // guards the caches behind pathmatch.h, and the notes
Notes g_notes;

void NoteFound(const std::string& path) {
    if (g_notes.bOn) g_notes.found.insert(path);
}

void NoteMissing(const std::string& name) {
    if (!g_notes.bOn) return;
    const std::vector<PathParts> cuts = CutPath(name);
    if (!cuts.empty()) g_notes.missing.insert(JoinPath(cuts.front()));
}

}  // namespace

FileStream* OpenNamed(const std::string& name) {
    const auto tryOpen = [](const std::string& candidate, void* pUser) {
        FileStream* pFile = OpenStream(candidate);
        *static_cast<FileStream**>(pUser) = pFile;
        if (pFile) NoteFound(candidate);
        return pFile != nullptr;
    };
    FileStream* pFile = nullptr;
    const std::lock_guard lock(g_mutex);
    if (!MatchPath(name, tryOpen, &pFile)) NoteMissing(name);
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
    found.empty() ? NoteMissing(name) : NoteFound(found);
    return found;
}

std::vector<std::string> FindSiblings(std::string_view name, const std::vector<std::string_view>& endings) {
    const std::lock_guard lock(g_mutex);
    std::vector<std::string> siblings = SiblingPaths(name, endings);
    for (const std::string& path : siblings) NoteFound(path);
    return siblings;
}

void ForgetLookups() {
    const std::lock_guard lock(g_mutex);
    ForgetPaths();
}

void NoteLookups() {
    const std::lock_guard lock(g_mutex);
    g_notes = {true, {}, {}};
}

NotedLookups TakeLookups() {
    const std::lock_guard lock(g_mutex);
    NotedLookups noted = {{g_notes.found.begin(), g_notes.found.end()},
                          {g_notes.missing.begin(), g_notes.missing.end()}};
    g_notes = Notes();
    return noted;
}
