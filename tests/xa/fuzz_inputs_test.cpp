// The fuzz target on its stored inputs: what once failed, and what a decoder must meet.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

TEST(XaFuzzInputs, AllComeThrough) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(LUMETRA_XA_INPUTS)) {
        std::ifstream file(entry.path(), std::ios::binary);
        std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        SCOPED_TRACE(entry.path());
        EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()), 0);
        ++count;
    }
    EXPECT_GE(count, 15);
}
