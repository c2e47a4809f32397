// Charts that were once found to be hard, and those from which the search for more begins.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "../../fuzz/run_chart.h"

namespace {

TEST(StoredCharts, AllEndWell) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(STORED_CHARTS)) {
        SCOPED_TRACE(entry.path());
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        RunChart(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        ++count;
    }
    EXPECT_GE(count, 3);
}

}  // namespace
