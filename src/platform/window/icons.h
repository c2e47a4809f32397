// Private to the window room: the picture behind an icon handle.
#pragma once

#include "host/host.h"
#include "platform/wintypes.h"

host::Icon IconPicture(HICON hIcon);  // empty for the standard icon and for an invalid handle
