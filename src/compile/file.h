// The bytes that the player would get of a name, found without the door.
#pragma once

#include <mutex>
#include <string>

#include "platform/byteblock.h"
#include "platform/substitutes/budget.h"
#include "platform/substitutes/media.h"
#include "platform/substitutes/sound.h"
#include "platform/substitutes/substitute.h"

namespace compile {

// What the files of one package may cost, on all threads together: the bounds of a chart's. Which files are
// beyond them may depend on the threads.
class Costs {
public:
    // MakeSubstitute within the bounds.
    Substitute Make(const std::vector<std::string>& paths, MediaKind kind, const MayHold& may_hold);
    // Counts a file that is read as it is. False when it is beyond the bounds.
    bool SpendReading(MediaKind kind, const std::string& path, uint64_t bytes);

private:
    std::mutex mutex_;
    Budget budget_;
};

// The file of that name as it is or converted, or else its substitute. Null when there is none, when it
// cannot be converted, when it has more than `most` bytes and when it costs too much. may_hold, if set, is
// asked before memory is taken. costs: null where the caller bounds them. Safe on any thread.
SharedBytes LoadFile(const std::string& name, MediaKind kind, size_t most, const MayHold& may_hold,
                     Costs* costs);

}  // namespace compile
