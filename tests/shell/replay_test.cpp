// A fuzz target on its stored inputs: none may crash, hang or trip a check of the target's own.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

TEST(Replay, StoredInputs) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(REPLAYED_INPUTS)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        SCOPED_TRACE(entry.path().filename().string());
        EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()), 0);
        ++count;
    }
    EXPECT_GE(count, 8);
}

}  // namespace
