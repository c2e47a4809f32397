#include "platform/open.h"

#include <algorithm>
#include <cstring>

#include "platform/codec/ahead.h"
#include "platform/files/files.h"
#include "platform/files/lookup.h"
#include "platform/files/stream.h"
#include "platform/substitutes/door.h"
#include "platform/watch.h"

namespace {

ChartMaker g_chartMaker;
constexpr int64_t kMaxMadeChart = int64_t{64} << 20;  // bytes; larger charts are read as they are

Door& TheDoor() {
    static Door door;
    return door;
}

DecodedPtr g_pDecoded;  // what was offered last; files are opened by one thread

void Offer(DecodedPtr pDecoded) {
    OfferDecoded(pDecoded.get());
    g_pDecoded = std::move(pDecoded);
}

FileStream* OpenMade(const std::string& name) {
    const std::shared_ptr<const Substitute> pMade = TheDoor().Take(name);
    if (pMade->pBytes) return OpenStream(pMade->pBytes);
    return pMade->path.empty() ? nullptr : OpenStream(pMade->path);
}

// A file that is there and of another kind is replaced by what it is converted to; null when that is left
// out.
FileStream* Converted(const std::string& name, FileStream* pFile) {
    BYTE aHead[kWaveHead];
    const size_t nHead = PeekStream(pFile, aHead, sizeof(aHead));
    Offer(NeedsDecoding(aHead, nHead) ? TheDoor().TakeDecoded(name) : nullptr);
    const MediaKind kind = ForeignKind(aHead, nHead, name);
    if (kind == MediaKind::kNone && g_chartMaker) TheDoor().TellFilm(name);
    if (kind == MediaKind::kNone || !TheDoor().IsWanted(kind)) return pFile;
    const std::shared_ptr<const Substitute> pMade = TheDoor().TakeNamed(name);
    if (pMade && !pMade->pBytes) return pFile;  // cannot be converted: read as it is
    FileClose(pFile);
    return pMade ? OpenStream(pMade->pBytes) : nullptr;
}

int64_t SizeOf(FileStream* pFile) {
    FileSeek(pFile, 0, SEEK_END);
    const int64_t nSize = FileTell(pFile);
    FileSeek(pFile, 0, SEEK_SET);
    return nSize;
}

std::string g_provided;   // the name that FileProvide was given
SharedBytes g_pProvided;  // null: none

FileStream* OpenChart(const char* pszPath) {
    return g_pProvided && g_provided == pszPath ? OpenStream(g_pProvided) : OpenNamed(pszPath);
}

bool ReadWhole(FileStream* pFile, ByteBlock* pBlock) {
    const int64_t nSize = SizeOf(pFile);
    if (nSize < 0 || nSize > kMaxMadeChart || !pBlock->Resize(static_cast<size_t>(nSize))) return false;
    const bool bRead = FileRead(pBlock->Data(), 1, pBlock->Size(), pFile) == pBlock->Size();
    FileSeek(pFile, 0, SEEK_SET);
    return bRead;
}

}  // namespace

FileStream* FileOpen(const char* pszPath, const char* pszMode) {
    if (!pszPath || !pszMode || std::strcmp(pszMode, "rb") != 0) return nullptr;
    FileStream* pOrdered = nullptr;
    if (Hooked(&pOrdered, PlatformCall::kFileOpen, pszPath)) return pOrdered;
    FileStream* pFile = TheDoor().HasMaker(pszPath) ? nullptr : OpenNamed(pszPath);
    pFile = pFile ? Converted(pszPath, pFile) : OpenMade(pszPath);
    if (!pFile || TheDoor().MayOpen(pszPath, SizeOf(pFile))) return pFile;
    FileClose(pFile);
    return nullptr;
}

FileStream* FileOpenAsNamed(const char* pszPath) {
    if (!pszPath) return nullptr;
    FileStream* pOrdered = nullptr;
    if (Hooked(&pOrdered, PlatformCall::kFileOpen, pszPath)) return pOrdered;
    FileStream* pFile = OpenChart(pszPath);
    if (!pFile || !g_chartMaker) return pFile;
    // A chart that is opened again at once registers the same files: they stay until then.
    const Door::Makers before = TheDoor().TakeMakers();
    ByteBlock chart;
    SharedBytes pMade = ReadWhole(pFile, &chart) ? g_chartMaker(pszPath, chart) : nullptr;
    if (!pMade) return pFile;
    FileClose(pFile);
    return OpenStream(std::move(pMade));
}

void SetChartMaker(ChartMaker maker) {
    TheDoor().TakeMakers();
    g_chartMaker = std::move(maker);
}

void RegisterFile(const std::string& name, FileMaker maker) {
    TheDoor().Register(name, std::move(maker));
}

void FileProvide(const char* pszPath, SharedBytes pBytes) {
    g_provided = pszPath;
    g_pProvided = std::move(pBytes);
}

std::string FileFind(const char* pszPath) {
    if (!pszPath) return "";
    std::string found = FindNamed(pszPath);
    return found.empty() ? TheDoor().Take(pszPath)->path : found;
}

void FileForgetListings() {
    TheDoor().BeginLoad();
    ForgetLookups();
}

void FilesExpect(int nKind, const char* const* ppszNames, int nCount) {
    std::vector<std::string> names(ppszNames, ppszNames + std::max(nCount, 0));
    TheDoor().Expect(nKind == FILES_PICTURES ? MediaKind::kPicture : MediaKind::kSound, std::move(names));
}

void FilesExpectNoMore() {
    Offer(nullptr);
    TheDoor().ExpectNoMore();
}
