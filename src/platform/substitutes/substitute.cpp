#include "platform/substitutes/substitute.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "platform/ascii.h"
#include "platform/files/handle.h"
#include "platform/files/lookup.h"
#include "platform/files/pathmatch.h"
#include "platform/files/text.h"
#include "platform/substitutes/kept.h"
#include "platform/substitutes/picture.h"

namespace {

// In the order in which they are tried.
constexpr std::string_view kSoundEndings[] = {".ogg", ".opus", ".flac", ".mp3", ".wav"};
constexpr std::string_view kPictureEndings[] = {".png", ".jpg", ".jpeg", ".gif", ".bmp"};
// Sounds too, but never used as substitutes.
constexpr std::string_view kFurtherSoundEndings[] = {".xa"};

constexpr std::string_view kFilmEndings[] = {".mpg", ".mpeg", ".avi", ".wmv", ".mp4", ".m4v", ".mov",
                                             ".mkv", ".webm", ".flv", ".ogv", ".asf", ".m1v", ".m2v"};

constexpr size_t kMaxNameForLog = 80;

template <size_t n>
bool EndsWithOne(std::string_view path, const std::string_view (&endings)[n]) {
    return std::any_of(endings, endings + n,
                       [&](std::string_view ending) { return AsciiEndsWith(path, ending); });
}

bool IsOwnKind(const BYTE* pHead, MediaKind kind) {
    if (kind == MediaKind::kPicture) return std::memcmp(pHead, "BM", 2) == 0;
    return std::memcmp(pHead, "RIFF", 4) == 0 || std::memcmp(pHead, "KWD1", 4) == 0;
}

enum class Outcome {
    kTaken,       // the file itself, or what was made of it
    kUnreadable,  // it cannot be converted
    kOverBudget,
    kBroken  // the caller ended it, so that nothing is known of it
};

// Whole, or nothing.
bool ReadFile(int nFile, size_t nBytes, ByteBlock* pBlock) {
    return pBlock->Resize(nBytes) && ReadFileAt(nFile, pBlock->Data(), nBytes, 0) == nBytes;
}

bool Convert(const ByteBlock& file, MediaKind kind, const MayHold& mayHold, ByteBlock* pOut) {
    return kind == MediaKind::kPicture ? PictureToBmp(file.Data(), file.Size(), pOut)
                                       : SoundToWav(file.Data(), file.Size(), mayHold, pOut);
}

Outcome Decode(int nFile, size_t nBytes, MediaKind kind, const ConversionLimits& limits, Conversion* pOut) {
    bool bBroken = false;
    const MayHold mayHold = [&](size_t n) {
        bBroken = limits.mayHold && !limits.mayHold(n);
        return !bBroken;
    };
    ByteBlock file;
    auto pMade = std::make_shared<ByteBlock>();
    if (!mayHold(nBytes)) return Outcome::kBroken;
    if (!ReadFile(nFile, nBytes, &file)) return Outcome::kUnreadable;
    if (kind == MediaKind::kPicture) pOut->nWork = PictureWork(file.Data(), nBytes);
    if (limits.pBudget && !limits.pBudget->MayDecode(kind, pOut->nWork)) return Outcome::kOverBudget;
    if (!Convert(file, kind, mayHold, pMade.get())) return bBroken ? Outcome::kBroken : Outcome::kUnreadable;
    if (kind == MediaKind::kSound) pOut->nWork = pMade->Size();
    pOut->pBytes = std::move(pMade);
    return Outcome::kTaken;
}

// The kept conversion, or a new one, which no other thread makes meanwhile.
Outcome FindOrDecode(int nFile, const FileIdentity& file, MediaKind kind, const ConversionLimits& limits,
                     Conversion* pOut, bool* pbDecoded) {
    KeptConversions& kept = TheKeptConversions();
    if (kept.FindOrBegin(file, pOut)) return Outcome::kTaken;
    ConversionLimits telling = limits;
    if (limits.mayHold) {
        telling.mayHold = [&](size_t nBytes) {
            kept.SetWaits(file.sPath, true);
            const bool bMay = limits.mayHold(nBytes);
            kept.SetWaits(file.sPath, false);
            return bMay;
        };
    }
    const Outcome outcome = Decode(nFile, static_cast<size_t>(file.nSize), kind, telling, pOut);
    *pbDecoded = outcome == Outcome::kTaken || outcome == Outcome::kUnreadable;
    if (*pbDecoded) kept.Add(file, *pOut);
    kept.End(file.sPath);
    return outcome;
}

Outcome Take(int nFile, const FileIdentity& file, MediaKind kind, const ConversionLimits& limits,
             Substitute* pSubstitute) {
    BYTE aHead[4];
    if (ReadFileAt(nFile, aHead, sizeof(aHead), 0) != sizeof(aHead)) return Outcome::kUnreadable;
    if (IsOwnKind(aHead, kind)) return Outcome::kTaken;
    const size_t nMost = kind == MediaKind::kPicture ? kMaxPictureFile : kMaxSoundFile;
    if (static_cast<uint64_t>(file.nSize) > nMost) return Outcome::kUnreadable;
    Conversion conversion;
    const Outcome outcome = FindOrDecode(nFile, file, kind, limits, &conversion, &pSubstitute->bDecoded);
    if (outcome == Outcome::kBroken || outcome == Outcome::kOverBudget) return outcome;
    pSubstitute->nWork = conversion.nWork;
    pSubstitute->pBytes = std::move(conversion.pBytes);
    return pSubstitute->pBytes ? Outcome::kTaken : Outcome::kUnreadable;
}

}  // namespace

MediaKind KindOfName(std::string_view path) {
    if (EndsWithOne(path, kSoundEndings) || EndsWithOne(path, kFurtherSoundEndings)) return MediaKind::kSound;
    return EndsWithOne(path, kPictureEndings) ? MediaKind::kPicture : MediaKind::kNone;
}

bool IsFilmName(std::string_view path) {
    return EndsWithOne(path, kFilmEndings);
}

std::string FindFilm(const std::string& name) {
    std::string path = FindNamed(name);
    if (!path.empty() || !IsFilmName(name)) return IsFilmName(path) ? path : "";
    for (const std::string& sibling :
         FindSiblings(name, {std::begin(kFilmEndings), std::end(kFilmEndings)})) {
        int64_t nSize;
        const int nFile = OpenRegularFile(sibling.c_str(), &nSize);
        if (nFile < 0) continue;
        close(nFile);
        return sibling;
    }
    return "";
}

std::vector<std::string> SubstitutePaths(std::string_view path, MediaKind kind) {
    if (kind == MediaKind::kSound)
        return FindSiblings(path, {std::begin(kSoundEndings), std::end(kSoundEndings)});
    if (kind == MediaKind::kPicture)
        return FindSiblings(path, {std::begin(kPictureEndings), std::end(kPictureEndings)});
    return {};
}

MediaKind ForeignKind(const BYTE* pHead, size_t nBytes, std::string_view name) {
    const std::string_view head(reinterpret_cast<const char*>(pHead), nBytes);
    for (const std::string_view sound : {"OggS", "fLaC"}) {
        if (head.starts_with(sound)) return MediaKind::kSound;
    }
    for (const std::string_view picture : {"\x89PNG\r\n\x1A\n", "\xFF\xD8\xFF", "GIF8"}) {
        if (head.starts_with(picture)) return MediaKind::kPicture;
    }
    const bool bFrame = nBytes >= 2 && pHead[0] == 0xFF && (pHead[1] & 0xE0) == 0xE0;
    const bool bMp3 = AsciiEndsWith(name, ".mp3") && (bFrame || head.starts_with("ID3"));
    return bMp3 ? MediaKind::kSound : MediaKind::kNone;
}

Substitute MakeSubstitute(const std::vector<std::string>& paths, MediaKind kind,
                          const ConversionLimits& limits) {
    Substitute substitute;
    for (const std::string& path : paths) {
        struct stat info;
        const int nFile = OpenRegularFile(path.c_str(), &info);
        if (nFile < 0) continue;
        const Outcome outcome = Take(nFile, FileIdentity(path, info), kind, limits, &substitute);
        close(nFile);
        if (outcome != Outcome::kUnreadable) {
            substitute.path = path;
            substitute.bOverBudget = outcome == Outcome::kOverBudget;
            break;
        }
        substitute.refused.push_back(path);
    }
    return substitute;
}

std::string NameForLog(std::string_view path) {
    const std::vector<PathParts> cuts = CutPath(path);
    std::string name = DisplayText(cuts.empty() ? std::string(path) : cuts[0].parts.back());
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '\n' || c == '\t'; }, ' ');
    size_t nCut = std::min(name.size(), kMaxNameForLog);
    while (nCut < name.size() && nCut > 0 && (static_cast<unsigned char>(name[nCut]) & 0xC0) == 0x80) --nCut;
    return name.substr(0, nCut);
}
