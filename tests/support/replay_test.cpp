// A fuzz target on its stored inputs: none may crash, hang or trip a check of the target's own.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

TEST(Replay, StoredInputs) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(REPLAYED_INPUTS)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        SCOPED_TRACE(entry.path().filename().string());
        // Whole, and its beginnings, so that a read behind their ends is one outside their memory.
        for (size_t length : {bytes.size(), size_t{0}, size_t{53}, size_t{54}, bytes.size() / 2}) {
            const std::vector<uint8_t> part(bytes.begin(), bytes.begin() + std::min(length, bytes.size()));
            EXPECT_EQ(LLVMFuzzerTestOneInput(part.data(), part.size()), 0) << length;
        }
        ++count;
    }
    EXPECT_GE(count, REPLAYED_COUNT);
}

}  // namespace
