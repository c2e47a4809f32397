// A ring of frame time stamps.
#pragma once

#include <cstdint>

class CFrameRate {
public:
    CFrameRate();
    void Stamp();
    uint32_t GetRate() const;  // frames per second; 0 until 256 stamps are taken

    uint32_t m_adwStamp[256];  // ms
    uint32_t m_nCount;
};
