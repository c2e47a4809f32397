#include "platform/substitutes/door.h"

#include <unistd.h>

#include <utility>

#include "platform/debug.h"
#include "platform/files/handle.h"
#include "platform/files/lookup.h"

namespace {

enum class Way { kAsItIs, kConverted, kDecoded };

// What the readers need of a file that is there.
Way WayOf(const std::string& path, MediaKind kind) {
    int64_t nSize = 0;
    const int nFile = OpenRegularFile(path.c_str(), &nSize);
    if (nFile < 0) return Way::kAsItIs;
    BYTE aHead[kWaveHead];
    const size_t nHead = ReadFileAt(nFile, aHead, sizeof(aHead), 0);
    close(nFile);
    if (kind != MediaKind::kNone && ForeignKind(aHead, nHead, path) == kind) return Way::kConverted;
    return kind == MediaKind::kSound && NeedsDecoding(aHead, nHead) ? Way::kDecoded : Way::kAsItIs;
}

DecodedPtr Decode(const std::string& path, const MayHold& mayHold) {
    int64_t nSize = 0;
    const int nFile = OpenRegularFile(path.c_str(), &nSize);
    if (nFile < 0) return nullptr;
    const auto nBytes = static_cast<size_t>(nSize);
    const auto pFile = std::make_shared<ByteBlock>();
    const bool bRead = nBytes <= kMostAhead && mayHold(nBytes) && pFile->Resize(nBytes) &&
                       ReadFileAt(nFile, pFile->Data(), nBytes, 0) == nBytes;
    close(nFile);
    return bRead ? DecodeAhead(pFile, mayHold) : nullptr;
}

const char* NameOf(MediaKind kind) {
    return kind == MediaKind::kPicture ? "pictures" : "sounds";
}

}  // namespace

Door::Door() : m_readAhead([this](const std::string& name, MediaKind kind) { return Prepare(name, kind); }) {}

void Door::Register(const std::string& name, FileMaker maker) {
    m_readAhead.Stop();
    m_makers[name] = std::move(maker);
}

Door::Makers Door::TakeMakers() {
    m_readAhead.Stop();
    return std::exchange(m_makers, {});
}

void Door::Expect(MediaKind kind, std::vector<std::string> names) {
    m_readAhead.Expect(kind, std::move(names));
    m_expected = kind;
}

void Door::ExpectNoMore() {
    m_readAhead.Stop();
    if (m_expected == MediaKind::kSound) m_makers.clear();
    m_expected = MediaKind::kNone;
}

void Door::BeginLoad() {
    ExpectNoMore();
    m_budget.Reset();
    m_nDecodedAhead = 0;
    m_told.clear();
    m_nToldOverBudget = 0;
    m_bToldFilm = false;
}

std::shared_ptr<const Substitute> Door::TakeWithinBudget(const std::string& name, bool* pbLeftOut) {
    const ReadAhead::Result result = m_readAhead.Take(name);
    const Substitute& taken = *result.pMade;
    *pbLeftOut = taken.bOverBudget || (taken.nWork && !m_budget.Spend(result.kind, taken.path, taken.nWork,
                                                                      result.bNew && taken.bDecoded));
    if (*pbLeftOut) TellOverBudget(name, result.kind);
    return *pbLeftOut ? std::make_shared<Substitute>() : result.pMade;
}

std::shared_ptr<const Substitute> Door::Take(const std::string& name) {
    bool bLeftOut = false;
    std::shared_ptr<const Substitute> pTaken = TakeWithinBudget(name, &bLeftOut);
    if (!bLeftOut) Tell(name, *pTaken);
    return pTaken;
}

std::shared_ptr<const Substitute> Door::TakeNamed(const std::string& name) {
    bool bLeftOut = false;
    std::shared_ptr<const Substitute> pTaken = TakeWithinBudget(name, &bLeftOut);
    return bLeftOut ? nullptr : pTaken;
}

DecodedPtr Door::TakeDecoded(const std::string& name) {
    const bool bListed = m_expected == MediaKind::kSound && m_readAhead.IsExpected(name);
    return bListed ? m_readAhead.Take(name).pMade->pDecoded : nullptr;
}

bool Door::MayOpen(const std::string& name, int64_t nBytes) {
    if (m_expected != MediaKind::kPicture || m_budget.SpendPicture(static_cast<uint64_t>(nBytes)))
        return true;
    TellOverBudget(name, MediaKind::kPicture);
    return false;
}

// On any thread.
ReadAhead::Make Door::Prepare(const std::string& name, MediaKind kind) {
    if (const auto it = m_makers.find(name); it != m_makers.end()) {
        return [&maker = it->second](const MayHold& mayHold) {
            auto pMade = std::make_shared<Substitute>();
            auto pBytes = std::make_shared<ByteBlock>();
            if (maker(mayHold, pBytes.get())) pMade->pBytes = std::move(pBytes);
            return pMade;
        };
    }
    std::vector<std::string> paths;
    if (const std::string path = FindNamed(name); path.empty())
        paths = SubstitutePaths(name, kind);
    else if (const Way way = WayOf(path, kind); way == Way::kConverted)
        paths = {path};
    else if (way == Way::kDecoded)
        return [this, path](const MayHold& mayHold) {
            auto pMade = std::make_shared<Substitute>();
            // The reader itself decodes as it converts.
            if (mayHold && m_nDecodedAhead < kMostSoundWork) pMade->pDecoded = Decode(path, mayHold);
            if (pMade->pDecoded) m_nDecodedAhead += pMade->pDecoded->pcm.Size();
            return pMade;
        };
    if (paths.empty()) return nullptr;
    return [this, kind, paths = std::move(paths)](const MayHold& mayHold) {
        return std::make_shared<Substitute>(MakeSubstitute(paths, kind, {mayHold, &m_budget}));
    };
}

void Door::TellFilm(const std::string& name) {
    if (m_expected != MediaKind::kPicture || m_bToldFilm || !IsFilmName(name)) return;
    m_bToldFilm = true;
    OutputDebugStringA(("Files: " + NameForLog(name) + " is a film; films are not shown\n").c_str());
}

void Door::Tell(const std::string& name, const Substitute& substitute) {
    if ((substitute.path.empty() && substitute.refused.empty()) || !m_told.insert(name).second) return;
    const std::string asked = "Files: " + NameForLog(name) + " not there, ";
    for (const std::string& path : substitute.refused)
        OutputDebugStringA((asked + NameForLog(path) + " cannot be read\n").c_str());
    if (!substitute.path.empty())
        OutputDebugStringA((asked + NameForLog(substitute.path) + " stands for it\n").c_str());
}

void Door::TellOverBudget(const std::string& name, MediaKind kind) {
    const unsigned nBit = 1u << static_cast<unsigned>(kind);
    if (m_nToldOverBudget & nBit) return;
    m_nToldOverBudget |= nBit;
    const std::string line = "Files: " + NameForLog(name) + " is beyond what the " + NameOf(kind) +
                             " of one chart may take; it and others are left out\n";
    OutputDebugStringA(line.c_str());
}
