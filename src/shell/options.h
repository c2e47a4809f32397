// The system's command line: what it asks of this instance and of the others.
#pragma once

#include <cstdint>

#include "platform/wintypes.h"

class CWinList;

constexpr int FILE_NAME_SIZE = 260;  // size of a chart's name in bytes, including the NUL

struct Options {
    int32_t nWindowX, nWindowY;  // outer corner in desktop pixels; -1: not given
    const char* pszRest;         // into the line: the chart's name and everything after it; may be empty
};

constexpr int SCAN_DONE = 0;  // the options end here
constexpr int SCAN_EXIT = 1;  // this instance is done: exit with this code

// Looks for -D only, because it affects options that come before it.
void ScanHostOption(const char* pszLine, const CWinList& list);
// Acts on the other options in order, or posts them to the one other instance. Returns SCAN_DONE or
// SCAN_EXIT.
int ScanOptions(const char* pszLine, const CWinList& list, Options* pOptions);

// Posts WM_REMOTE_HOST to every other instance.
void PostHost(const CWinList& list);

// -M: the speed multiplier in whole hundredths; 50 when missing or outside 0.1 to 8.
int32_t SpeedFromText(const char* pszValue);
// WM_REMOTE_SPEED: 50 when outside 10 to 800.
int32_t SpeedFromMessage(int32_t nHundredths);
void SetSpeed(int32_t nHundredths);
// -N and WM_REMOTE_SEEK: clamped to at least -1, the very beginning.
int32_t ClampMeasure(int32_t nMeasure);

// The chart's name from the rest of the line, or from the dialog when that is empty; truncated to
// FILE_NAME_SIZE bytes. False when the dialog was cancelled.
bool TakeFileName(const char* pszRest, char* szFile);

// The open dialog, at start and for loading another chart. Zero when it was cancelled. szFile: FILE_NAME_SIZE
// bytes, zeroed by the caller.
BOOL AskChartFile(HWND hOwner, HINSTANCE hInstance, char* szFile);
void StripQuotes(char* szFile);  // removes one quote at each end
