// The long commands, told to the instance that runs.
#pragma once

#include <string>

#include "app/long_options.h"

namespace app {

// Exit codes of long_options.h; what went wrong is one line on standard error.
int RunCommand(const LongOptions& options);

// --open where an instance runs: kNoneRuns without a word where none does, so that one is started.
int OpenInRunning(const LongOptions& options, const std::string& path);

// Until the instance plays and its device has asked for sound, 10 s at most.
int WaitUntilHeard();

void Say(const std::string& line);  // on standard error, as this program's

}  // namespace app
