// The fuzz target of pictures or of sounds on its stored inputs.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

TEST(PackageReplay, AllComeThrough) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(LUMETRA_INPUTS)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        SCOPED_TRACE(entry.path());
        EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()), 0);
        ++count;
    }
    EXPECT_GE(count, 7);
}
