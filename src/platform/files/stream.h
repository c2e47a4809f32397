// What a FileStream is: private to the files layer. files.h has the calls on one.
#pragma once

#include <string>

#include "platform/byteblock.h"
#include "platform/files/files.h"

// A regular file of this machine. Null when OpenRegularFile refuses it.
FileStream* OpenStream(const std::string& path);

// A file made in memory; shares the bytes.
FileStream* OpenStream(SharedBytes pBytes);
