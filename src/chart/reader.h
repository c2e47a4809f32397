// Taking the lines of a chart file from its text, and the keywords of the two passes.
#pragma once

#include "chart/bms.h"

constexpr int LINE_BUFFER = 1024;  // a line keeps at most 1023 bytes

// A walk over the text. The two ends that were found ahead are kept, so that a text of NULs or of lone CRs
// costs no more than any other.
struct LineScan {
    const char* pNext;  // read position
    const char* pEnd;   // end of the text; a NUL stands there
    const char*
        pBreak;        // the next CR LF at or behind pNext, pEnd when there is none; null: not looked for yet
    const char* pNul;  // the next NUL likewise
};

void StartLines(LineScan* pScan, const char* pText, int64_t nSize);
// Takes the next line into szLine, cut at its first LF or TAB, at least 8 bytes of which are written. Its
// length, or -1 when the text is at its end.
int TakeLine(LineScan* pScan, char* szLine);

// The whole file with a NUL behind it, to be freed with delete[]; null when it cannot be had or is too large.
// Drops what is remembered of folders.
char* ReadChartText(const char* pszPath, int64_t* pnSize);

// Whether a line can be a command: it has more than 4 characters, the first of which is the `#`.
bool IsCommand(const char* szLine, int nLength);

// Splits `#mmmcc:data`. False for any other line; with a channel of -1 for one that is to be dropped. The
// underscores of the data, which begins at column 7, are gone afterwards.
bool SplitChannel(char* szLine, int32_t* pnMeasure, int32_t* pnChannel);

// First pass: #WAV, #BMP, #BGA and #PATH_WAV. szLine is a line with its length; szDir (BMS_PATH bytes) is the
// directory in force.
void ReadDefinition(CBMS* pBms, const char* szLine, int nLength, char* szDir);
// Second pass: the header values and the extended tempos.
void ReadHeader(CBMS* pBms, const char* szLine, int nLength);
