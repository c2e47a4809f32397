// Commands and channels that other players know and this one passes over.
#pragma once

#include <string_view>

#include "check/finding.h"

namespace check {

struct Foreign {
    const char* code;
    Severity severity;
    const char* effect;  // what it means that the player passes over it, and how to mend it
};

// The command whose word (the letters and digits behind the `#`) this is, with or without a number of two
// digits behind it; null when nobody knows it. *name: the command alone.
const Foreign* FindForeignCommand(std::string_view word, const char** name);

// A channel that makes no object, by its two characters.
const Foreign* FindForeignChannel(std::string_view channel);

}  // namespace check
