// The stored inputs of a fuzz target.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "support/tempfolder.h"

namespace test {

// Calls `run` with the bytes of each file in the folder; there must be that many at least.
inline void Replay(const std::string& folder, int least,
                   const std::function<void(const uint8_t* data, size_t size)>& run) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        SCOPED_TRACE(entry.path());
        const std::string bytes = ReadFile(entry.path());
        run(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        ++count;
    }
    EXPECT_GE(count, least);
}

}  // namespace test
