#include "platform/watch.h"

CallHook g_pfnCallHook;
