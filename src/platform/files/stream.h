// Private to the files room: opening a FileStream. files.h has the calls on it.
#pragma once

#include <string>

#include "platform/byteblock.h"
#include "platform/files/files.h"

// Opens a regular file of this machine. Null when OpenRegularFile fails.
FileStream* OpenStream(const std::string& path);

// Opens a file in memory; shares the bytes.
FileStream* OpenStream(SharedBytes pBytes);
