// The receiving end of messages between instances, for the other files of this host.
#pragma once

#include "host/host.h"

namespace host::desktop {

// The next message of another instance. The first call of a round fixes how many the round may take, up to a
// bound; later ones wait for the next round, so that a flood cannot stop the frames.
bool TakePosted(Event* event);
bool PostedWaits();     // whether TakePosted would return one
void EndPostedRound();  // call when a frame has been shown or the program sleeps

// A descriptor that is readable while messages wait; -1 while this instance is not announced.
int PostedSignal();
void ClearPostedSignal();

// The stream socket of an instance, empty when there is none.
std::string ChannelPath(uint64_t id);

// Waits for a message where no window system is open.
void WaitPosted(int milliseconds);

}  // namespace host::desktop
