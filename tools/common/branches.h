// --seed and --random: which branches of #RANDOM and #SWITCH are taken.
#pragma once

#include <string>

#include "dialect/lines.h"

namespace tools {

// "12": branches are drawn with this seed, the same on every run. False for anything but a number of 64 bits.
bool ReadSeed(const std::string& text, dialect::Choice* choice);
// "2,1,3": one branch for each #RANDOM and #SWITCH in turn, from 1. False for anything else.
bool ReadBranches(const std::string& text, dialect::Choice* choice);

}  // namespace tools
