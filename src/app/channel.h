// The second channel's commands (docs/remote.md), between its thread and the main thread.
#pragma once

#include "app/status.h"

namespace app {

// Before the program: from the announcement on the channel answers. announced: called once, when the window
// has been announced and its title set; loaded: once, when the first chart has been loaded. Both may be null.
void ServeChannel(void (*announced)(), void (*loaded)() = nullptr);

// For tests: as in a fresh process.
void ResetChannel();

}  // namespace app
