#include "platform/sound/memory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

// Under a sanitizer every block is a separate allocation, so that out-of-bounds reads are detected.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SOUND_PLAIN_MEMORY 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SOUND_PLAIN_MEMORY 1
#endif
#endif

namespace audio {
namespace {

constexpr size_t kHugePage = size_t{2} << 20;
constexpr size_t kFirstArena = size_t{2} << 20;
constexpr size_t kLargestArena = size_t{32} << 20;
constexpr size_t kAlignment = 64;
constexpr unsigned char kMiddle = 0x80;

size_t RoundUp(size_t n, size_t unit) {
    return (n + unit - 1) / unit * unit;
}

#if defined(__linux__) && !defined(SOUND_PLAIN_MEMORY)

// Maps memory aligned to a huge page: maps too much, then trims.
unsigned char* Map(size_t bytes) {
    void* raw = mmap(nullptr, bytes + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED) return nullptr;
    auto* begin = static_cast<unsigned char*>(raw);
    const auto address = reinterpret_cast<size_t>(begin);
    const size_t skip = RoundUp(address, kHugePage) - address;
    if (skip > 0) munmap(begin, skip);
    if (skip < kHugePage) munmap(begin + skip + bytes, kHugePage - skip);
    madvise(begin + skip, bytes, MADV_HUGEPAGE);  // a hint; small pages work too
    return begin + skip;
}

void Unmap(unsigned char* p, size_t bytes) {
    munmap(p, bytes);
}

// A file in memory with a huge page of kMiddle, which any number of mappings share; -1 when there is none.
int MiddleFile() {
    static const int fd = [] {
        const int file = memfd_create("silence", MFD_CLOEXEC);
        const std::vector<unsigned char> bytes(kHugePage, kMiddle);
        if (file < 0 || write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()))
            return file;
        close(file);
        return -1;
    }();
    return fd;
}

// Maps silence in place of whole pages. Returns the bytes done: fewer when the system refuses.
size_t MapSilence(unsigned char* p, size_t bytes, unsigned char value) {
    const int fd = value == 0 ? -1 : MiddleFile();
    if (value != 0 && fd < 0) return 0;
    const int flags = MAP_PRIVATE | MAP_FIXED | (value == 0 ? MAP_ANONYMOUS : 0);
    const size_t most = value == 0 ? bytes : kHugePage;
    for (size_t done = 0, n; done < bytes; done += n) {
        n = std::min(bytes - done, most);
        if (mmap(p + done, n, PROT_READ | PROT_WRITE, flags, fd, 0) == MAP_FAILED) return done;
    }
    if (value == 0) madvise(p, bytes, MADV_HUGEPAGE);
    return bytes;
}

#else

unsigned char* Map(size_t bytes) {
    return static_cast<unsigned char*>(::operator new (bytes, std::align_val_t{kAlignment}, std::nothrow));
}

void Unmap(unsigned char* p, size_t) {
    ::operator delete (p, std::align_val_t{kAlignment});
}

#endif

class Arena {
public:
    Arena(unsigned char* base, size_t bytes) : m_base(base), m_bytes(bytes) { m_free[0] = bytes; }
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena() { Unmap(m_base, m_bytes); }

    bool Contains(const unsigned char* p) const { return p >= m_base && p < m_base + m_bytes; }
    bool Empty() const { return m_used == 0; }

    // First fit, so that the next chart reuses memory that is already mapped.
    unsigned char* Allocate(size_t bytes, bool* fresh) {
        for (auto it = m_free.begin(); it != m_free.end(); ++it) {
            if (it->second < bytes) continue;
            const size_t at = it->first, left = it->second - bytes;
            m_free.erase(it);
            if (left > 0) m_free[at + bytes] = left;
            *fresh = at >= m_touched;
            m_touched = std::max(m_touched, at + bytes);
            m_used += bytes;
            return m_base + at;
        }
        return nullptr;
    }

    void Free(const unsigned char* p, size_t bytes) {
        m_used -= bytes;
        auto it = m_free.emplace(static_cast<size_t>(p - m_base), bytes).first;
        const auto after = std::next(it);
        if (after != m_free.end() && it->first + it->second == after->first) {
            it->second += after->second;
            m_free.erase(after);
        }
        if (it == m_free.begin()) return;
        const auto before = std::prev(it);
        if (before->first + before->second != it->first) return;
        before->second += it->second;
        m_free.erase(it);
    }

private:
    unsigned char* m_base;
    size_t m_bytes;
    size_t m_used = 0, m_touched = 0;  // m_touched: nothing at or above this offset was ever handed out
    std::map<size_t, size_t> m_free;   // offset to size
};

struct Heap {
    std::mutex lock;
    std::vector<std::unique_ptr<Arena>> arenas;
    size_t used = 0;
    size_t next_arena = kFirstArena;
};

// Never destroyed: a buffer may be released during static destruction.
Heap& TheHeap() {
    static Heap* const heap = new Heap;
    return *heap;
}

// A block of at least half the largest arena gets a mapping of its own.
Arena* AddArena(Heap& heap, size_t bytes) {
#if defined(SOUND_PLAIN_MEMORY)
    const size_t size = bytes;
#else
    const bool own = bytes >= kLargestArena / 2;
    const size_t size = RoundUp(own ? bytes : std::max(bytes, heap.next_arena), kHugePage);
    if (!own) heap.next_arena = std::min(heap.next_arena * 4, kLargestArena);
#endif
    unsigned char* base = Map(size);
    if (base == nullptr) return nullptr;
    heap.arenas.push_back(std::make_unique<Arena>(base, size));
    return heap.arenas.back().get();
}

}  // namespace

SampleBlock AllocateSamples(size_t bytes) {
    SampleBlock block;
    Heap& heap = TheHeap();
    const std::lock_guard<std::mutex> hold(heap.lock);
    if (bytes == 0 || bytes > kSampleMemoryLimit) return block;
    const size_t size = RoundUp(bytes, kAlignment);
    if (heap.used + size > kSampleMemoryLimit) return block;
    bool fresh = false;
    for (auto& arena : heap.arenas) {
        block.data = arena->Allocate(size, &fresh);
        if (block.data != nullptr) break;
    }
    if (block.data == nullptr) {
        Arena* arena = AddArena(heap, size);
        if (arena != nullptr) block.data = arena->Allocate(size, &fresh);
    }
    if (block.data == nullptr) return block;
    heap.used += size;
    block.bytes = size;
#if defined(__linux__) && !defined(SOUND_PLAIN_MEMORY)
    block.zeroed = fresh;
#endif
    return block;
}

void FreeSamples(const SampleBlock& block) {
    if (block.data == nullptr) return;
    Heap& heap = TheHeap();
    const std::lock_guard<std::mutex> hold(heap.lock);
    for (auto it = heap.arenas.begin(); it != heap.arenas.end(); ++it) {
        if (!(*it)->Contains(block.data)) continue;
        (*it)->Free(block.data, block.bytes);
        heap.used -= block.bytes;
        if ((*it)->Empty()) heap.arenas.erase(it);
        if (heap.arenas.empty()) heap.next_arena = kFirstArena;
        return;
    }
}

void FillSamples(unsigned char* data, size_t bytes, unsigned char value) {
#if defined(__linux__) && !defined(SOUND_PLAIN_MEMORY)
    if (bytes >= kLargeFill && (value == 0 || value == kMiddle)) {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const auto address = reinterpret_cast<size_t>(data);
        const size_t head = RoundUp(address, page) - address;
        const size_t done = MapSilence(data + head, (bytes - head) / page * page, value);
        std::memset(data, value, head);
        data += head + done;
        bytes -= head + done;
    }
#endif
    std::memset(data, value, bytes);
}

}  // namespace audio
