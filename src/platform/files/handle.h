// Private to the files layer: this machine's own files.
#pragma once

#include <sys/stat.h>

#include "platform/wintypes.h"

// A handle on a regular file and its size; -1 when it is none, may not be read, or has 2^31 bytes or more.
// Never blocks on a pipe.
int OpenRegularFile(const char* pszPath, int64_t* pnSize);
// The same with all that the machine tells of it.
int OpenRegularFile(const char* pszPath, struct stat* pInfo);

// Bytes read at an offset; fewer than asked for at the end of the file or on a failure.
size_t ReadFileAt(int nFile, BYTE* pBuffer, size_t nBytes, int64_t nOffset);
