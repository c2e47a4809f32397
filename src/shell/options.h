// The command line of the system: what it asks of this copy and of the others.
#pragma once

#include <cstdint>

#include "platform/wintypes.h"

class CWinList;

constexpr int FILE_NAME_SIZE = 260;  // bytes of a chart's name, its NUL included

struct Options {
    int32_t nWindowX, nWindowY;  // outer corner in desktop pixels; -1: not given
    const char* pszRest;         // into the line: the chart's name with everything behind it, may be empty
};

constexpr int SCAN_DONE = 0;  // the options end here
constexpr int SCAN_EXIT = 1;  // this copy has done its work: end with that exit code

// Looks for -D alone: it may stand behind options whose meaning hangs on it.
void ScanHostOption(const char* pszLine, const CWinList& list);
// Acts on the others in the order of the line, or posts them to the one other copy. SCAN_DONE or SCAN_EXIT.
int ScanOptions(const char* pszLine, const CWinList& list, Options* pOptions);

// Takes WM_REMOTE_HOST to every other copy.
void PostHost(const CWinList& list);

// -M: whole hundredths of the text's speed multiplier; 50 for none and for one outside 0.1 to 8.
int32_t SpeedFromText(const char* pszValue);
// WM_REMOTE_SPEED: 50 for what lies outside 10 to 800.
int32_t SpeedFromMessage(int32_t nHundredths);
void SetSpeed(int32_t nHundredths);
// -N, WM_REMOTE_SEEK: what lies below -1, the very beginning, counts as that.
int32_t ClampMeasure(int32_t nMeasure);

// The chart's name from the rest of the line, or from the dialog when that is empty; FILE_NAME_SIZE bytes,
// cut. False when the dialog was cancelled.
bool TakeFileName(const char* pszRest, char* szFile);

// The open dialog, at start and for a change of chart. Zero when it was cancelled. szFile: FILE_NAME_SIZE
// bytes, zeroed by the caller.
BOOL AskChartFile(HWND hOwner, HINSTANCE hInstance, char* szFile);
void StripQuotes(char* szFile);  // those around a name
