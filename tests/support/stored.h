// Results of many cases as text, compared with a stored file.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "support/tempfolder.h"

namespace test {

// Fails at the first line that differs from the file. With LUMETRA_STORE set in the environment it writes the
// file instead; review what changed in it.
inline void ExpectStored(const std::string& text, const std::string& path) {
    if (std::getenv("LUMETRA_STORE")) std::ofstream(path, std::ios::binary) << text;
    std::istringstream now(text), then(ReadFile(path));
    std::string title, line, wanted;
    for (int number = 1; std::getline(then, wanted) || !wanted.empty(); ++number) {
        if (!std::getline(now, line)) line = "(nothing)";
        if (wanted.rfind("== ", 0) == 0) title = wanted;
        ASSERT_EQ(line, wanted) << path << ":" << number << ", in " << title;
        wanted.clear();
    }
    EXPECT_FALSE(std::getline(now, line)) << path << " ends before: " << line;
}

// Eight hexadecimal digits by which two byte sequences differ, most likely.
inline std::string Hash(const std::string& bytes) {
    uint32_t hash = 2166136261u;
    for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08x", hash);
    return digits;
}

}  // namespace test
