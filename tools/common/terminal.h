// Text from outside (file names, chart texts, messages of other programs) on its way to a terminal.
#pragma once

#include <string>
#include <string_view>

namespace tools {

// One line of UTF-8 without control characters. Bytes that are not UTF-8 are taken as CP932 where all of them
// make sense so; those that do not, and C0, DEL, C1, line separators and changes of writing direction, become
// visible escapes such as \x1B or \u202E. A text without any of these comes back unchanged.
std::string CleanText(std::string_view bytes);

}  // namespace tools
