// --watch: the chart is loaded anew when it, or a sound or a picture that it uses, was written. All on the
// main thread.
#pragma once

#include <string>

namespace app {

void SetWatch(bool watch);  // from the next load on
bool WatchWanted();
bool Watches();  // wanted, and possible here

// Around each load, and its probe when it has one: what is used is watched afterwards. A load that has begun
// is not begun again.
void NoteUse();
void DropUse();  // it was refused
void KeepUse();

// While events are polled outside loads: loads the chart anew when it is time.
void PollWatch();

// Why the chart that was written last did not replace the one that is loaded; empty when it did.
const std::string& WatchRefusal();

void ResetWatch();  // for tests: as in a fresh process

}  // namespace app
