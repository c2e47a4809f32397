// For programs that run the system several times in one process.
#pragma once

// The stand-ins' state as in a fresh process: no window class, no window, no message, no remembered folder or
// listing. The system must have been shut down before.
void ResetPlatform();
