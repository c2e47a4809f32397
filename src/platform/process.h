// For programs that run the system several times in one process.
#pragma once

// Resets the stand-ins to the state of a new process: no window class, window or message, no remembered
// folder or listing. The system must have been shut down.
void ResetPlatform();
