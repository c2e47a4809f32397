// A user's wish that the program ends.
#pragma once

namespace tools {

// From now on SIGINT, SIGTERM and SIGHUP only set a flag, so that outputs are given up in order, and a closed
// pipe is an error of its write.
void CatchSignals();

bool Stopped();  // one of them has come

}  // namespace tools
