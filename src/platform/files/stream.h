// Private to the files room: opening a FileStream. files.h has the calls on it.
#pragma once

#include <string>

#include "platform/byteblock.h"
#include "platform/files/files.h"

// Opens a regular file of this machine. Null when OpenRegularFile fails.
FileStream* OpenStream(const std::string& path);

// The first bytes, at most 4,096 of them, without moving the position; fewer at the end of the file. The next
// reads take them from memory.
size_t PeekStream(FileStream* pFile, BYTE* pBuffer, size_t nBytes);

// Opens a file in memory; shares the bytes.
FileStream* OpenStream(SharedBytes pBytes);
