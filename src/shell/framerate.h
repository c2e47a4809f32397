// A ring buffer of frame timestamps. Lives on the stack of WinMain.
#pragma once

#include <cstdint>

class CFrameRate {
public:
    CFrameRate();
    void Stamp();
    uint32_t GetRate() const;  // frames per second; 0 before 256 stamps

    uint32_t m_adwStamp[256];  // ms
    uint32_t m_nCount;
};
