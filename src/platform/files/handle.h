// Private to the files room: files of this machine.
#pragma once

#include <sys/stat.h>

#include "platform/wintypes.h"

// Returns a file descriptor and sets the size. -1 when the file is not regular, not readable, or has 2^31
// bytes or more. Never blocks on a pipe.
int OpenRegularFile(const char* pszPath, int64_t* pnSize);
// The same with all that the machine tells of it.
int OpenRegularFile(const char* pszPath, struct stat* pInfo);

// Returns the bytes read at an offset; fewer than requested at the end of the file or on failure.
size_t ReadFileAt(int nFile, BYTE* pBuffer, size_t nBytes, int64_t nOffset);
