// Substitutes made before they are asked for, on other threads, while the reader works through its list of
// names in order.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "platform/substitutes/substitute.h"

// Used from one thread; the others are its own. They are started when the first substitute is needed, so that
// a package in which every file is there under its name has none of them, and never on a machine of one core.
class ReadAhead {
public:
    using SubstitutePtr = std::shared_ptr<const Substitute>;

    ~ReadAhead() { Stop(); }

    // The names that will be opened, in order; what came before is dropped and its threads end.
    void Expect(MediaKind kind, std::vector<std::string> names);
    void Stop();

    // The substitute for a name that is not there; never null. Names of the list are of its kind, others of
    // that which their ending tells. The last one asked for is kept, because a loader opens a name twice.
    SubstitutePtr Take(const std::string& name);
    // Drops the one that was kept.
    void Forget();

    size_t ThreadsStarted() const { return m_threads.size(); }

private:
    enum class State { kWaiting, kRunning, kDone, kTaken };
    struct Job {
        std::string name;
        State state = State::kWaiting;
        size_t nReserved = 0;   // bytes
        bool bDropped = false;  // broken off, so that what was made says nothing
        SubstitutePtr pMade;    // null when it is to be made when it is asked for
    };
    static constexpr size_t kNone = SIZE_MAX;

    SubstitutePtr TakeJob(size_t nJob);
    SubstitutePtr MakeHere(const std::string& name, MediaKind kind);
    void StartThreads();
    void Work();
    void RunJob(std::unique_lock<std::mutex>* pLock, size_t nJob);
    bool TryReserve(size_t nJob, size_t nBytes);
    bool IsSkipped(size_t nJob) const;  // the reader has gone on without it
    void DropJobsBefore(size_t nJob);
    void Release(Job* pJob);

    // Of the one thread.
    MediaKind m_kind = MediaKind::kNone;
    std::unordered_map<std::string, size_t> m_indexes;
    std::vector<std::thread> m_threads;
    bool m_bConverts = false;  // something of the list has been converted
    std::string m_keptName;
    SubstitutePtr m_pKept;

    std::mutex m_mutex;  // for what follows
    std::condition_variable m_changed;
    std::vector<Job> m_jobs;
    size_t m_nNext = 0;        // the first that no thread has looked at
    size_t m_nReader = 0;      // the first that the reader may still ask for
    size_t m_nWanted = kNone;  // the one that the reader waits for: it may always go on
    size_t m_nReserved = 0;    // bytes of all jobs
    bool m_bStop = false;
};
