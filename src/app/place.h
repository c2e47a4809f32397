// Where the window was: written by each instance at its end, read by --open.
#pragma once

#include <string>
#include <vector>

#include "host/host.h"

namespace app {

// $XDG_STATE_HOME/lumetra/place, with ~/.local/state for an unset variable; empty without an absolute path.
std::string PlaceFile();

void SavePlace();  // at the end; failures are ignored

// -X and -Y for a player that is started; none when no place is known. Opens the display.
std::vector<std::string> PlaceOptions();

// The text of the file, and its reading; false for anything but what PlaceText gives.
std::string PlaceText(const host::Rect& outer);
bool ReadPlaceText(const std::string& text, host::Rect* outer);

// Moved wholly onto one of the screens, the one of which it covers most; its corner stays visible on one that
// is too small.
host::Rect FitPlace(const host::Rect& outer, const std::vector<host::Rect>& screens);

}  // namespace app
