// The bytes that the player would get of a name, found without the door.
#pragma once

#include <string>

#include "platform/byteblock.h"
#include "platform/substitutes/media.h"

namespace compile {

// The file of that name as it is or converted, or else its substitute. Null when there is none, when it
// cannot be converted, and when it has more than `most` bytes. Safe on any thread.
SharedBytes LoadFile(const std::string& name, MediaKind kind, size_t most);

}  // namespace compile
