// Telling a double click from two clicks.
#pragma once

#include <cstdint>
#include <cstdlib>

namespace host::desktop {

// Desktops agree on 500 ms; FLTK takes twice as long. Every second press of a quick series is a double click.
class ClickCounter {
public:
    // time: of the window system, ms, wrapping. True for a double click.
    bool Press(uint32_t time, int x, int y) {
        const bool second = m_single && time - m_time <= kLongest && std::abs(x - m_x) <= kFarthest &&
                            std::abs(y - m_y) <= kFarthest;
        m_single = !second;
        m_time = time, m_x = x, m_y = y;
        return second;
    }

private:
    static constexpr uint32_t kLongest = 500;  // ms
    static constexpr int kFarthest = 5;        // pixels
    bool m_single = false;                     // the last press was not the second of a double click
    uint32_t m_time = 0;
    int m_x = 0, m_y = 0;
};

}  // namespace host::desktop
