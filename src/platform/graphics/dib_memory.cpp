// The registered memory ranges of bitmaps.
#include <map>
#include <mutex>
#include <new>

#include "platform/graphics/dib_format.h"

namespace {

std::mutex g_mutex;  // pictures are also put together on other threads

std::map<uintptr_t, size_t>& Ranges() {
    static std::map<uintptr_t, size_t> ranges;
    return ranges;
}

}  // namespace

bool RegisterDibMemory(const void* pData, size_t nSize) {
    if (!pData || nSize == 0) return false;
    const std::lock_guard lock(g_mutex);
    try {
        Ranges()[reinterpret_cast<uintptr_t>(pData)] = nSize;
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

void UnregisterDibMemory(const void* pData) {
    const std::lock_guard lock(g_mutex);
    Ranges().erase(reinterpret_cast<uintptr_t>(pData));
}

const BYTE* FindDibEnd(const void* p) {
    const auto nAddress = reinterpret_cast<uintptr_t>(p);
    const std::lock_guard lock(g_mutex);
    auto it = Ranges().upper_bound(nAddress);
    if (it == Ranges().begin()) return nullptr;
    --it;
    if (nAddress - it->first > it->second) return nullptr;
    return reinterpret_cast<const BYTE*>(it->first) + it->second;
}
