// What a user at a shell would otherwise have to guess: one line each on standard error. The system's exit
// codes and texts stay as they are.
#pragma once

namespace app {

// Of the line itself: an unknown option, an option after the chart's name.
void SayWhatIsIgnored(int argc, const char* const* argv);

// How the system's line ended. others: the instances that were running before it.
void SayHowItEnded(int argc, const char* const* argv, int exit_code, int others);

}  // namespace app
