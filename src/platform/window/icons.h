// Private to the window's stand-ins: the picture behind an icon handle.
#pragma once

#include "host/host.h"
#include "platform/wintypes.h"

host::Icon IconPicture(HICON hIcon);  // empty for the system's own and for a handle that is none
