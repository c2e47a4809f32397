// Starting a player.
#pragma once

#include "app/long_options.h"

namespace app {

// The system, from its command line to its exit code. What it says of a missing display is said here.
int RunSystem(int argc, const char* const* argv);

// --open: in the instance that runs, or in one that is started as a process of its own. An exit code.
int Open(const LongOptions& options);

// After a chart has been loaded: how to start one that stands still.
void SayHowToStart();

}  // namespace app
