// The receiving end of the copies' messages, for the other files of this host.
#pragma once

#include "host/host.h"

namespace host::desktop {

// The next message of another copy. What has come by the first call of a round is handed out, up to a bound;
// what comes later waits for the next round, so that a flood cannot keep the frames from being drawn.
bool TakePosted(Event* event);
bool PostedWaits();     // whether TakePosted would give one
void EndPostedRound();  // a frame has been shown, or the program sleeps

// Becomes readable when a message has come; -1 while no copy is announced.
int PostedSignal();
void ClearPostedSignal();

// Waits for a message, for a host without a window.
void WaitPosted(int milliseconds);

}  // namespace host::desktop
