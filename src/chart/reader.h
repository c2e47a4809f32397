// Splits a chart's text into lines and reads the keywords of both passes.
#pragma once

#include "chart/bms.h"

constexpr int LINE_BUFFER = 1024;  // a line is cut to 1023 bytes

// A position in the text.
struct LineScan {
    const char* pNext;     // read position
    const char* pEnd;      // end of the text; points to a NUL
    const char* pLineEnd;  // of the line taken last: its CR LF or NUL, or the text's end
};

void StartLines(LineScan* pScan, const char* pText, int64_t nSize);
// Finds the next line, cut at its first LF or TAB, and its length, at most LINE_BUFFER - 1. Null at the end
// of the text.
const char* NextLine(LineScan* pScan, int* pnLength);
// Copies a line to szLine (LINE_BUFFER bytes) and ends it with a NUL, a short one with NULs up to column 7.
void CopyLine(const char* pLine, int nLength, char* szLine);

// Reads the whole file and appends a NUL. Free with delete[]. Null when it cannot be read or is too large.
// Drops cached folder listings.
char* ReadChartText(const char* pszPath, int64_t* pnSize);

// True if the line can be a command: at least 5 characters, the first of them `#`.
bool IsCommand(const char* szLine, int nLength);

// Measure and channel of a line `#mmmcc:data`, whose data starts at column 7. False for any other line. The
// channel is -1 for a line to be dropped. szLine: 8 bytes at least.
bool ReadPlace(const char* szLine, int32_t* pnMeasure, int32_t* pnChannel);

// First pass: #WAV, #BMP, #BGA and #PATH_WAV. szLine is a line of nLength bytes; szDir (BMS_PATH bytes) is
// the current directory for sounds and pictures.
void ReadDefinition(CBMS* pBms, const char* szLine, int nLength, char* szDir);
// Second pass: header values and extended tempos.
void ReadHeader(CBMS* pBms, const char* szLine, int nLength);
