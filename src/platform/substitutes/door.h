// The one door for bytes that are no file of the name that is asked for: substitutes and files that somebody
// makes. Each file is made once, whatever asks for it; what a chart may cost, reading ahead and the log's
// lines are here, once.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/substitutes/budget.h"
#include "platform/substitutes/readahead.h"
#include "platform/substitutes/substitute.h"

// Makes the bytes of a file. False when it cannot, or when mayHold ends it. Called on any thread, at most
// once at a time for one name.
using FileMaker = std::function<bool(const MayHold& mayHold, ByteBlock* pBytes)>;

// Used from one thread; the others are ReadAhead's own.
class Door {
public:
    Door();

    // A name, spelled exactly as it will be opened, whose bytes come from a maker, whatever the disk has.
    // Lasts until a list of sounds ends, which come last in a load, or until TakeMakers.
    void Register(const std::string& name, FileMaker maker);
    using Makers = std::unordered_map<std::string, FileMaker>;
    Makers TakeMakers();  // all of them; none is left
    bool HasMaker(const std::string& name) const { return !m_makers.empty() && m_makers.count(name) != 0; }

    // The names that will be opened, in order; what came before is dropped.
    void Expect(MediaKind kind, std::vector<std::string> names);
    void ExpectNoMore();

    // For a name with a maker, or one that is not there: what takes its place, logged once for each name of a
    // load. Never null. A file beyond the chart's budget has no path.
    std::shared_ptr<const Substitute> Take(const std::string& name);
    // The same for a file that is there under its name and is of another kind than the readers know
    // (ForeignKind). Without bytes when it cannot be converted; null when it is beyond the chart's budget.
    // Only the budget is logged.
    std::shared_ptr<const Substitute> TakeNamed(const std::string& name);
    // For a sound that is there and NeedsDecoding: its samples, when it is in the list; otherwise null.
    DecodedPtr TakeDecoded(const std::string& name);
    // Whether a file of that kind would be converted where this name is opened: not a picture among sounds.
    bool IsWanted(MediaKind kind) const { return m_expected == MediaKind::kNone || m_expected == kind; }
    // Counts a picture that is opened. False, with a line of log, when it is beyond the chart's budget.
    bool MayOpen(const std::string& name, int64_t nBytes);

    // Logs once for each load that a name in the list of pictures is a film.
    void TellFilm(const std::string& name);

    // A new load begins: nothing is spent, nothing was logged. What is kept stays.
    void BeginLoad();

private:
    std::shared_ptr<const Substitute> TakeWithinBudget(const std::string& name, bool* pbLeftOut);
    ReadAhead::Make Prepare(const std::string& name, MediaKind kind);
    void Tell(const std::string& name, const Substitute& substitute);
    void TellOverBudget(const std::string& name, MediaKind kind);

    Budget m_budget;
    std::atomic<uint64_t> m_nDecodedAhead{0};  // bytes of samples, of one load
    Makers m_makers;                           // changes only while no thread reads ahead
    MediaKind m_expected = MediaKind::kNone;   // of the list
    std::unordered_set<std::string> m_told;    // names whose substitute the log has told
    unsigned m_nToldOverBudget = 0;            // a bit for each kind
    bool m_bToldFilm = false;
    ReadAhead m_readAhead;  // last: its threads use the others
};
