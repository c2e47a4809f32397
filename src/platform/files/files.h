// Opens and reads files by the names that charts and users give them.
//
// The bytes of a name may be CP932 or UTF-8. Its separators may be `\` or `/`; a `\` that is the second byte
// of a two-byte character does not separate. Its letter case may differ from the disk's, and the disk may use
// composed or decomposed UTF-8 or raw CP932. An exact match wins over a forgiving one.
#pragma once

#include <string>

#include "platform/byteblock.h"
#include "platform/wintypes.h"

struct FileStream;

// Opens a regular file for reading; the only mode is "rb". Null when the file does not exist, is a folder, a
// device or a pipe, is not readable, or has 2^31 bytes or more. Never blocks on a pipe.
//
// For a missing sound or picture, opens a substitute if there is one, such as kick.ogg for kick.wav. The
// stream then holds a WAV or BMP file made from it, and the log says so once (docs/packages.md). Declared
// here for the readers, defined above the substitutes in platform/open.cpp.
FileStream* FileOpen(const char* pszPath, const char* pszMode);

// The same without substitutes; for charts.
FileStream* FileOpenAsNamed(const char* pszPath);

// From now on FileOpenAsNamed opens these bytes under this name, spelled exactly so, whatever the disk has: a
// chart that comes from elsewhere, such as standard input. A further call replaces the first; null bytes end
// it.
void FileProvide(const char* pszPath, SharedBytes pBytes);

// The path on this machine of the file that FileOpen would open or convert; empty when there is none.
std::string FileFind(const char* pszPath);

// Like fread, fseek, ftell and fclose of the standard library.
size_t FileRead(void* pBuffer, size_t nSize, size_t nCount, FileStream* pFile);
int FileSeek(FileStream* pFile, int64_t nOffset, int nWhence);
int64_t FileTell(FileStream* pFile);
int FileClose(FileStream* pFile);

// Folder listings are cached between opens, because a chart names hundreds of files in one folder. This drops
// the cache and ends the lists below. Opening a chart calls it, so each load sees the disk as it is.
void FileForgetListings();

// Announces the sounds or pictures that will be opened next, in order. All names in the list are of that
// kind, whatever their endings. Files that need conversion are converted ahead on other threads, up to 64
// MiB; the results and the log do not depend on it. A new list replaces the previous one.
constexpr int FILES_PICTURES = 1, FILES_SOUNDS = 2;
void FilesExpect(int nKind, const char* const* ppszNames, int nCount);
// Ends the list and its threads.
void FilesExpectNoMore();
