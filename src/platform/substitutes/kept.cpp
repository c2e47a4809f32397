#include "platform/substitutes/kept.h"

#include <unistd.h>

#include <algorithm>

namespace {

constexpr size_t kMostKept = size_t{512} << 20;
constexpr size_t kEntryBytes = 256;  // so that files that cannot be converted count too

size_t Weight(const Conversion& conversion) {
    return kEntryBytes + (conversion.pBytes ? conversion.pBytes->Size() : 0);
}

int64_t Nanoseconds(const timespec& time) {
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

size_t MostKept() {
    const long nPages = sysconf(_SC_PHYS_PAGES), nPage = sysconf(_SC_PAGESIZE);
    if (nPages <= 0 || nPage <= 0) return kMostKept / 4;
    return std::min(kMostKept, static_cast<size_t>(nPages) / 8 * static_cast<size_t>(nPage));
}

}  // namespace

FileIdentity::FileIdentity(std::string path, const struct stat& info)
    : sPath(std::move(path)),
      nDevice(info.st_dev),
      nInode(info.st_ino),
      nSize(info.st_size),
      nModified(Nanoseconds(info.st_mtim)),
      nChanged(Nanoseconds(info.st_ctim)) {}

bool KeptConversions::FindOrBegin(const FileIdentity& file, Conversion* pConversion) {
    std::unique_lock lock(m_mutex);
    m_made.wait(lock, [&] {
        const auto it = m_making.find(file.sPath);
        return it == m_making.end() || it->second.nThreads == it->second.nWaiting;
    });
    if (FindLocked(file, pConversion)) return true;
    ++m_making[file.sPath].nThreads;
    return false;
}

void KeptConversions::End(const std::string& path) {
    {
        const std::lock_guard lock(m_mutex);
        const auto it = m_making.find(path);
        if (--it->second.nThreads == 0) m_making.erase(it);
    }
    m_made.notify_all();
}

void KeptConversions::SetWaits(const std::string& path, bool bWaits) {
    {
        const std::lock_guard lock(m_mutex);
        m_making[path].nWaiting += bWaits ? 1 : -1;
    }
    m_made.notify_all();
}

bool KeptConversions::Find(const FileIdentity& file, Conversion* pConversion) {
    const std::lock_guard lock(m_mutex);
    return FindLocked(file, pConversion);
}

bool KeptConversions::FindLocked(const FileIdentity& file, Conversion* pConversion) {
    const auto it = m_byPath.find(file.sPath);
    if (it == m_byPath.end()) return false;
    if (it->second->file != file) {
        Remove(it->second);
        return false;
    }
    m_entries.splice(m_entries.begin(), m_entries, it->second);
    *pConversion = it->second->conversion;
    return true;
}

void KeptConversions::Add(const FileIdentity& file, const Conversion& conversion) {
    const std::lock_guard lock(m_mutex);
    if (const auto it = m_byPath.find(file.sPath); it != m_byPath.end()) Remove(it->second);
    const size_t nWeight = Weight(conversion);
    if (nWeight > m_nMost) return;
    while (m_nBytes + nWeight > m_nMost) Remove(std::prev(m_entries.end()));
    Entries made;  // either both have it or none
    made.push_front({file, conversion});
    m_byPath[file.sPath] = made.begin();
    m_entries.splice(m_entries.begin(), made);
    m_nBytes += nWeight;
}

size_t KeptConversions::Bytes() {
    const std::lock_guard lock(m_mutex);
    return m_nBytes;
}

void KeptConversions::Remove(Entries::iterator it) {
    m_nBytes -= Weight(it->conversion);
    m_byPath.erase(it->file.sPath);
    m_entries.erase(it);
}

// Never destroyed: a thread that reads ahead may outlive static objects.
KeptConversions& TheKeptConversions() {
    static KeptConversions* const pKept = new KeptConversions(MostKept());
    return *pKept;
}
