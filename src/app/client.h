// The long commands, told to the instance that runs.
#pragma once

#include <string>

#include "app/long_options.h"

namespace app {

// Exit codes of long_options.h; what went wrong is one line on standard error.
int RunCommand(const LongOptions& options);

// What --open means: a chart, or a folder whose charts the user is asked for.
struct Target {
    std::string path;  // absolute; a folder may be empty: where the player asked last
    bool ask = false;
};

// --open where an instance runs: kNoneRuns without a word where none does, so that one is started.
int OpenInRunning(const LongOptions& options, const Target& target);

// Until the instance plays and its device has asked for sound, at most 10 s after the load. asks: the user
// chooses the chart first.
int WaitUntilHeard(bool asks);

void Say(const std::string& line);  // on standard error, as this program's

}  // namespace app
