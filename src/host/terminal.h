// Text from outside on its way to a terminal.
#pragma once

#include <string>
#include <string_view>

namespace host {

// UTF-8 that moves no cursor, changes no colour and starts no new line: C0, DEL, C1, line separators, changes
// of writing direction and bytes that are not UTF-8 become escapes such as \x1B or \u202E. Anything else
// stays as it is.
std::string TerminalText(std::string_view bytes);

}  // namespace host
