#include "platform/substitutes/door.h"

#include <unistd.h>

#include "platform/debug.h"
#include "platform/files/handle.h"
#include "platform/files/lookup.h"

namespace {

// Of the file that a name stands for: its path where it must be converted, otherwise empty.
std::string ForeignFile(const std::string& name, MediaKind kind) {
    const std::string path = FindNamed(name);
    int64_t nSize = 0;
    const int nFile = path.empty() ? -1 : OpenRegularFile(path.c_str(), &nSize);
    if (nFile < 0) return "";
    BYTE aHead[kForeignHead];
    const size_t nHead = ReadFileAt(nFile, aHead, sizeof(aHead), 0);
    close(nFile);
    return ForeignKind(aHead, nHead, path) == kind && kind != MediaKind::kNone ? path : "";
}

// Those that may take the name's place: the file itself where it is there.
std::vector<std::string> PathsFor(const std::string& name, MediaKind kind) {
    const std::string foreign = ForeignFile(name, kind);
    if (!foreign.empty()) return {foreign};
    return FindNamed(name).empty() ? SubstitutePaths(name, kind) : std::vector<std::string>();
}

const char* NameOf(MediaKind kind) {
    return kind == MediaKind::kPicture ? "pictures" : "sounds";
}

}  // namespace

Door::Door()
    : m_readAhead({[this](const std::string& name, MediaKind kind) {
                       return HasMaker(name) || !PathsFor(name, kind).empty();
                   },
                   [this](const std::string& name, MediaKind kind, const MayHold& mayHold) {
                       return Make(name, kind, mayHold);
                   },
                   [this](const std::string& name, MediaKind kind) {
                       return HasMaker(name) || FindNamed(name).empty() || !ForeignFile(name, kind).empty();
                   }}) {}

void Door::Register(const std::string& name, FileMaker maker) {
    m_readAhead.Stop();
    m_makers[name] = std::move(maker);
}

void Door::ForgetMakers() {
    m_readAhead.Stop();
    m_makers.clear();
}

void Door::Expect(MediaKind kind, std::vector<std::string> names) {
    m_readAhead.Expect(kind, std::move(names));
    m_expected = kind;
}

void Door::ExpectNoMore() {
    m_readAhead.Stop();
    m_expected = MediaKind::kNone;
}

void Door::BeginLoad() {
    ExpectNoMore();
    m_budget.Reset();
    m_told.clear();
    m_nToldOverBudget = 0;
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

bool Door::MayOpen(const std::string& name, int64_t nBytes) {
    if (m_expected != MediaKind::kPicture || m_budget.SpendPicture(static_cast<uint64_t>(nBytes)))
        return true;
    TellOverBudget(name, MediaKind::kPicture);
    return false;
}

// On any thread.
std::shared_ptr<const Substitute> Door::Make(const std::string& name, MediaKind kind,
                                             const MayHold& mayHold) {
    const ConversionLimits limits = {mayHold, &m_budget};
    const auto it = m_makers.find(name);
    if (it == m_makers.end())
        return std::make_shared<Substitute>(MakeSubstitute(PathsFor(name, kind), kind, limits));
    auto pMade = std::make_shared<Substitute>();
    auto pBytes = std::make_shared<ByteBlock>();
    if (it->second(mayHold, pBytes.get())) pMade->pBytes = std::move(pBytes);
    return pMade;
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
