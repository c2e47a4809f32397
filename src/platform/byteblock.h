// A growable block of uninitialised bytes, for files made in memory.
#pragma once

#include <cstdlib>
#include <memory>

#include "platform/wintypes.h"

class ByteBlock {
public:
    ByteBlock() = default;
    ~ByteBlock() { std::free(m_pBytes); }
    ByteBlock(const ByteBlock&) = delete;
    ByteBlock& operator=(const ByteBlock&) = delete;

    BYTE* Data() { return m_pBytes; }
    const BYTE* Data() const { return m_pBytes; }
    size_t Size() const { return m_nSize; }

    // New bytes are undefined. False when out of memory; then nothing changes.
    bool Resize(size_t nSize) {
        if (nSize > m_nCapacity && !Reallocate(nSize)) return false;
        m_nSize = nSize;
        return true;
    }
    // Like Resize, but reserves extra capacity, so that growing step by step costs little.
    bool Grow(size_t nSize) {
        if (nSize > m_nCapacity && !Reallocate(nSize + nSize / 2) && !Reallocate(nSize)) return false;
        m_nSize = nSize;
        return true;
    }
    // Releases unused capacity.
    void Trim() {
        if (m_nSize < m_nCapacity) Reallocate(m_nSize);
    }

private:
    bool Reallocate(size_t nCapacity) {
        void* p = std::realloc(m_pBytes, nCapacity ? nCapacity : 1);
        if (!p) return false;
        m_pBytes = static_cast<BYTE*>(p);
        m_nCapacity = nCapacity;
        return true;
    }

    BYTE* m_pBytes = nullptr;
    size_t m_nSize = 0;
    size_t m_nCapacity = 0;
};

using SharedBytes = std::shared_ptr<const ByteBlock>;
