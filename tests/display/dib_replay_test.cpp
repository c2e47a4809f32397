// Inputs of the BMP fuzzer, stored because they once failed or stand for a kind of file. The sanitizers are
// the check.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

TEST(DibReplay, StoredInputsAndTheirBeginnings) {
    int nFiles = 0;
    for (const auto& entry : std::filesystem::directory_iterator(FUZZ_INPUTS "/fuzz_bmp")) {
        SCOPED_TRACE(entry.path().string());
        std::ifstream in(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
        const auto* pData = reinterpret_cast<const uint8_t*>(bytes.data());
        EXPECT_EQ(LLVMFuzzerTestOneInput(pData, bytes.size()), 0);
        for (size_t nLength : {size_t{0}, size_t{53}, size_t{54}, bytes.size() / 2}) {
            const std::vector<uint8_t> part(pData, pData + std::min(nLength, bytes.size()));
            EXPECT_EQ(LLVMFuzzerTestOneInput(part.data(), part.size()), 0);
        }
        ++nFiles;
    }
    EXPECT_GE(nFiles, 17);
}

}  // namespace
