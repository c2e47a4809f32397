// A fuzz target on its stored inputs: none may crash, hang or trip a check of the target's own.
#include "support/replay.h"

#include <algorithm>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

TEST(Replay, StoredInputs) {
    test::Replay(REPLAYED_INPUTS, REPLAYED_COUNT, [](const uint8_t* data, size_t size) {
        // Whole, and its beginnings, so that a read behind their ends is one outside their memory.
        for (size_t length : {size, size_t{0}, size_t{53}, size_t{54}, size / 2}) {
            const std::vector<uint8_t> part(data, data + std::min(length, size));
            EXPECT_EQ(LLVMFuzzerTestOneInput(part.data(), part.size()), 0) << length;
        }
    });
}

}  // namespace
