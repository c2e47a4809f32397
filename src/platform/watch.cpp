#include "platform/watch.h"

PlatformWatch g_Watch;
