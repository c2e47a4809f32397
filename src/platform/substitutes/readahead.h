// Makes substitutes ahead of time, on other threads, while the reader works through its list of names in
// order.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "platform/substitutes/substitute.h"

// Lives as long as the process (platform/open.cpp). All public calls come from one thread. Worker threads
// start when the first substitute is needed, so a package without missing files starts none; neither does a
// machine with one core.
class ReadAhead {
public:
    using SubstitutePtr = std::shared_ptr<const Substitute>;
    // Makes one file; the result is never null. Both are called on any thread.
    using Make = std::function<SubstitutePtr(const MayHold& mayHold)>;
    // Looks a name up and tells how its file is made; empty when there is nothing to make.
    using Prepare = std::function<Make(const std::string& name, MediaKind kind)>;
    struct Result {
        SubstitutePtr pMade;  // never null
        MediaKind kind;       // of the list for its names, of the name's ending for others
        bool bNew;            // otherwise it is the one that was taken last
    };

    explicit ReadAhead(Prepare prepare) : m_prepare(std::move(prepare)) {}
    ~ReadAhead() { Stop(); }

    // Sets the names that will be opened, in order. Drops the previous list and ends its threads.
    void Expect(MediaKind kind, std::vector<std::string> names);
    void Stop();

    bool IsExpected(const std::string& name) const { return m_indexes.count(name) != 0; }
    // What is made for a name. The last one asked for is kept, because a loader opens a name twice.
    Result Take(const std::string& name);
    // Drops the one that was kept.
    void Forget();

    size_t ThreadsStarted() const { return m_threads.size(); }

private:
    enum class State { kWaiting, kRunning, kDone, kTaken };
    struct Job {
        std::string name;
        State state = State::kWaiting;
        size_t nReserved = 0;   // bytes
        bool bDropped = false;  // interrupted, so the result is meaningless
        SubstitutePtr pMade;    // null: to be made when requested
    };
    static constexpr size_t kNone = SIZE_MAX;

    SubstitutePtr TakeJob(size_t nJob);
    SubstitutePtr MakeHere(const std::string& name, MediaKind kind);
    void StartThreads();
    void Work();
    void RunJob(std::unique_lock<std::mutex>* pLock, size_t nJob);
    bool TryReserve(size_t nJob, size_t nBytes);
    bool IsSkipped(size_t nJob) const;  // the reader has passed it
    void DropJobsBefore(size_t nJob);
    void Release(Job* pJob);

    const Prepare m_prepare;
    // Of the one thread.
    MediaKind m_kind = MediaKind::kNone;
    std::unordered_map<std::string, size_t> m_indexes;
    std::vector<std::thread> m_threads;
    bool m_bConverts = false;  // something in the list has been converted
    std::string m_keptName;
    SubstitutePtr m_pKept;
    MediaKind m_keptKind = MediaKind::kNone;

    std::mutex m_mutex;  // guards everything below
    std::condition_variable m_changed;
    std::vector<Job> m_jobs;
    size_t m_nNext = 0;        // the first job that no thread has started
    size_t m_nReader = 0;      // the first job that the reader may still request
    size_t m_nWanted = kNone;  // the job that the reader waits for; it is never held up
    size_t m_nReserved = 0;    // bytes of all jobs
    bool m_bStop = false;
};
