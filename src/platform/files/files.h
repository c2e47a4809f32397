// Reading files by the names that charts and users give them.
//
// A name's bytes may be CP932 or UTF-8 and its separators `\` or `/` (a `\` that is the second byte of a
// two-byte character separates nothing), its letter case may differ from the disk's, and the disk may hold
// composed or decomposed UTF-8 or raw CP932. The exact name wins over forgiving matches.
#pragma once

#include <string>

#include "platform/wintypes.h"

struct FileStream;

// Opens a regular file for reading; the only mode is "rb". Null when there is no such file, when it is a
// folder, a device or a pipe, when it may not be read, or when it has 2^31 bytes or more. Never blocks on a
// pipe.
//
// A file beside a sound or a picture that is not there can take its place, such as kick.ogg for kick.wav. The
// stream then holds the bytes of a WAV or a BMP file made from it, and the log says so once
// (docs/packages.md). Declared here for the readers, defined above the substitutes (platform/open.cpp).
FileStream* FileOpen(const char* pszPath, const char* pszMode);

// The same without substitutes, for a chart.
FileStream* FileOpenAsNamed(const char* pszPath);

// The file that FileOpen would open, or make what it opens of, as this machine names it; empty when there is
// none.
std::string FileFind(const char* pszPath);

// As fread, fseek, ftell and fclose of the standard library.
size_t FileRead(void* pBuffer, size_t nSize, size_t nCount, FileStream* pFile);
int FileSeek(FileStream* pFile, int64_t nOffset, int nWhence);
int64_t FileTell(FileStream* pFile);
int FileClose(FileStream* pFile);

// A listing of a folder is kept between opens, because a chart names hundreds of files of one folder. This
// drops what is kept and ends the lists; the opening of a chart file calls it, so that each load sees the
// disk as it is.
void FileForgetListings();

// The sounds or the pictures that will be opened next, in order. Names of the list are of its kind whatever
// their endings are. Where files have to be made for them, they are made ahead on other threads, at most 64
// MiB of them; what the opens give and the log says is the same without. A further list replaces this one.
constexpr int FILES_PICTURES = 1, FILES_SOUNDS = 2;
void FilesExpect(int nKind, const char* const* ppszNames, int nCount);
// The end of the lists: ends the threads.
void FilesExpectNoMore();
