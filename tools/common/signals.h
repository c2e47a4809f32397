// A user's wish that the program ends.
#pragma once

namespace tools {

// From now on SIGINT, SIGTERM and SIGHUP only set a flag, so that outputs are given up in order. A closed
// pipe and a file beyond its permitted size are errors of their writes.
void CatchSignals();

bool Stopped();  // one of them has come

}  // namespace tools
