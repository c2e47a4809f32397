// The desktop portal, over the session bus.
#pragma once

namespace host::desktop {

enum class ColorScheme { kUnknown, kDark, kLight };

// Asks on a thread of its own, so that a portal that hangs delays nothing: starting it may take its time.
void AskColorScheme();
ColorScheme AnsweredColorScheme();        // the latest answer
bool AwaitColorScheme(int milliseconds);  // whether the latest question has been answered

}  // namespace host::desktop
