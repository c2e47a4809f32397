#include "platform/process.h"

#include "platform/files.h"
#include "platform/window_state.h"

void ResetPlatform() {
    ResetMessages();
    ResetWindows();
    ResetDialogs();
    FileForgetListings();
}
