// What was made from files, kept from one load to the next: an author loads the same package hundreds of
// times.
#pragma once

#include <sys/stat.h>

#include <condition_variable>
#include <cstdint>
#include <list>
#include <mutex>
#include <string>
#include <unordered_map>

#include "platform/byteblock.h"

// A file as it was when it was read. A file that is written anew, in place or by renaming, differs.
struct FileIdentity {
    FileIdentity() = default;
    FileIdentity(std::string path, const struct stat& info);
    bool operator==(const FileIdentity&) const = default;

    std::string sPath;  // of this machine
    uint64_t nDevice = 0, nInode = 0;
    int64_t nSize = 0;                    // bytes
    int64_t nModified = 0, nChanged = 0;  // ns
};

struct Conversion {
    SharedBytes pBytes;  // null: the file cannot be converted
    uint64_t nWork = 0;  // what it costs to make, in the unit of its kind (budget.h)
};

// Safe on any thread. Holds at most nMostBytes of results; the ones not used for the longest time go first.
class KeptConversions {
public:
    explicit KeptConversions(size_t nMostBytes) : m_nMost(nMostBytes) {}

    // False: nothing is kept, and the caller makes it, adds it if it can and calls End with the path of the
    // file. Waits while another thread makes the same, but never for one that waits for memory itself.
    bool FindOrBegin(const FileIdentity& file, Conversion* pConversion);
    void End(const std::string& path);
    // Around each wait for memory between the two.
    void SetWaits(const std::string& path, bool bWaits);

    bool Find(const FileIdentity& file, Conversion* pConversion);
    // Replaces what was kept of the same path. A result larger than the bound is not kept.
    void Add(const FileIdentity& file, const Conversion& conversion);
    size_t Bytes();

private:
    struct Entry {
        FileIdentity file;
        Conversion conversion;
    };
    using Entries = std::list<Entry>;
    struct Makers {
        int nThreads = 0, nWaiting = 0;  // of them, for memory
    };

    bool FindLocked(const FileIdentity& file, Conversion* pConversion);
    void Remove(Entries::iterator it);

    const size_t m_nMost;
    std::mutex m_mutex;  // for what follows
    Entries m_entries;   // last used first
    std::unordered_map<std::string, Entries::iterator> m_byPath;
    size_t m_nBytes = 0;
    std::condition_variable m_made;
    std::unordered_map<std::string, Makers> m_making;  // by path
};

// The one of the process: an eighth of the machine's memory, at most 512 MiB.
KeptConversions& TheKeptConversions();
