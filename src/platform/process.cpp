#include "platform/process.h"

#include "platform/files/files.h"
#include "platform/window/window_state.h"

void ResetPlatform() {
    ResetMessages();
    ResetWindows();
    ResetDialogs();
    FileForgetListings();
}
