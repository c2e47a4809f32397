// What the player itself hears in a file: its dialect, read on its own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dialect {

struct HeardSound {
    double ms;
    std::string_view name;  // as the file's line has it, without blanks behind it where those do not matter
    bool elsewhere;         // looked for in the folder of a #PATH_WAV
};

// The sounds of numbers with a file that the player starts, in no order. False when it refuses the file.
bool ReadAsPlayer(std::string_view bytes, std::vector<HeardSound>* sounds);

}  // namespace dialect
