#include "common/branches.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "common/arguments.h"

namespace tools {

bool ReadSeed(const std::string& text, dialect::Choice* choice) {
    choice->kind = dialect::Choice::kSeed;
    return ReadWithin<uint64_t>(text, 0, std::numeric_limits<uint64_t>::max(), &choice->seed);
}

bool ReadBranches(const std::string& text, dialect::Choice* choice) {
    choice->kind = dialect::Choice::kList;
    for (size_t at = 0; at <= text.size();) {
        const size_t comma = std::min(text.find(',', at), text.size());
        int32_t branch = 0;
        if (!ReadWithin(std::string_view(text).substr(at, comma - at), 1, 0x7FFFFFFF, &branch)) return false;
        choice->list.push_back(branch);
        at = comma + 1;
    }
    return true;
}

}  // namespace tools
