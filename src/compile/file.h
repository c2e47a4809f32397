// The bytes that the player would get of a name, found without the door.
#pragma once

#include <string>

#include "platform/byteblock.h"
#include "platform/substitutes/media.h"
#include "platform/substitutes/sound.h"

namespace compile {

// The file of that name as it is or converted, or else its substitute. Null when there is none, when it
// cannot be converted, and when it has more than `most` bytes. may_hold, if set, is asked before memory is
// taken. Safe on any thread.
SharedBytes LoadFile(const std::string& name, MediaKind kind, size_t most, const MayHold& may_hold = {});

}  // namespace compile
