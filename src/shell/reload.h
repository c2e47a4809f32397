// Loads another chart into the same window, sound device and display.
#pragma once

#include "platform/wintypes.h"

// Asks for a file with the dialog, then loads it. A chart that cannot be loaded ends the program.
void ReloadChart(HWND hWnd);
