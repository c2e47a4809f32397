#include "platform/substitutes/readahead.h"

#include <algorithm>
#include <system_error>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

// Memory for what has been made and not been asked for, and for what is being made.
constexpr size_t kMostAhead = size_t{64} << 20;
constexpr size_t kMostThreads = 8;

// Each conversion needs about the memory that the one before has freed. Left to itself the allocator gives
// such blocks back to the system, and to fetch them anew, page by page, takes a quarter of a load's time.
void KeepFreedMemory(bool bKeep) {
#ifdef __GLIBC__
    constexpr int kUsual = 128 << 10;
    mallopt(M_MMAP_THRESHOLD, bKeep ? 32 << 20 : kUsual);
    mallopt(M_TRIM_THRESHOLD, bKeep ? static_cast<int>(kMostAhead) : kUsual);
    if (!bKeep) malloc_trim(0);
#endif
}

}  // namespace

void ReadAhead::Expect(MediaKind kind, std::vector<std::string> names) {
    Stop();
    m_kind = kind;
    for (std::string& name : names) {
        if (!m_places.emplace(name, m_jobs.size()).second) continue;
        m_jobs.emplace_back().name = std::move(name);
    }
}

void ReadAhead::Stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_bStop = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads) thread.join();
    m_threads.clear();
    m_places.clear();
    m_jobs.clear();
    m_kind = MediaKind::kNone;
    m_nNext = m_nReader = m_nHeld = 0;
    m_nWanted = kNone;
    m_bStop = false;
    Forget();
    if (m_bConverts) KeepFreedMemory(false);
    m_bConverts = false;
}

void ReadAhead::Forget() {
    m_pKept = nullptr;
    m_keptName.clear();
}

ReadAhead::Result ReadAhead::Take(const std::string& name) {
    if (m_pKept && m_keptName == name) return {m_pKept, m_keptKind, false};
    Forget();
    const auto it = m_places.find(name);
    m_keptKind = it != m_places.end() ? m_kind : KindOfName(name);
    m_pKept = it != m_places.end() ? TakeJob(it->second) : nullptr;
    if (!m_pKept) m_pKept = MakeHere(name, m_keptKind);
    m_keptName = name;
    return {m_pKept, m_keptKind, true};
}

// Null when it is to be made here.
ReadAhead::SubstitutePtr ReadAhead::TakeJob(size_t nJob) {
    std::unique_lock lock(m_mutex);
    Job& job = m_jobs[nJob];
    if (job.state == State::kTaken) return nullptr;
    DropJobsBefore(nJob);
    m_nReader = nJob + 1;
    m_nNext = std::max(m_nNext, m_nReader);
    if (job.state == State::kWaiting) {
        job.state = State::kTaken;
        return nullptr;
    }
    m_nWanted = nJob;
    m_changed.notify_all();
    m_changed.wait(lock, [&] { return job.state == State::kDone; });
    m_nWanted = kNone;
    job.state = State::kTaken;
    SubstitutePtr pMade = std::move(job.pMade);
    Release(&job);
    m_changed.notify_all();
    return pMade;
}

ReadAhead::SubstitutePtr ReadAhead::MakeHere(const std::string& name, MediaKind kind) {
    if (!m_jobs.empty() && m_making.isPossible(name, kind)) {
        if (!m_bConverts) KeepFreedMemory(true);
        m_bConverts = true;
        StartThreads();
    }
    return m_making.make(name, kind, nullptr);
}

// One for each core: while the reader waits for one of them all cores still work.
void ReadAhead::StartThreads() {
    const size_t nCores = std::thread::hardware_concurrency();
    if (!m_threads.empty() || nCores < 2 || m_nReader >= m_jobs.size()) return;
    try {
        for (size_t n = 0; n < std::min(nCores, kMostThreads); ++n)
            m_threads.emplace_back([this] { Work(); });
    } catch (const std::system_error&) {
        // Those that could be started do, or none.
    }
}

void ReadAhead::Work() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [&] { return m_bStop || m_nNext >= m_jobs.size() || m_nHeld < kMostAhead; });
        if (m_bStop || m_nNext >= m_jobs.size()) return;
        RunJob(&lock, m_nNext++);
    }
}

void ReadAhead::RunJob(std::unique_lock<std::mutex>* pLock, size_t nJob) {
    Job& job = m_jobs[nJob];  // the list does not change while threads run
    job.state = State::kRunning;
    pLock->unlock();
    SubstitutePtr pMade;
    if (m_making.isNeeded(job.name))
        pMade = m_making.make(job.name, m_kind, [&](size_t nBytes) { return MayHoldMore(nJob, nBytes); });
    if (pMade && pMade->bOverBudget) pMade = nullptr;  // the reader may have spent less by then
    const size_t nMade = pMade && pMade->pBytes ? pMade->pBytes->Size() : 0;
    pLock->lock();
    job.state = State::kDone;
    m_nHeld += nMade - job.nHeld;
    job.nHeld = nMade;
    job.pMade = std::move(pMade);
    if (job.bDropped || IsPassed(nJob)) Release(&job);
    m_changed.notify_all();
}

bool ReadAhead::MayHoldMore(size_t nJob, size_t nBytes) {
    std::unique_lock lock(m_mutex);
    Job& job = m_jobs[nJob];
    m_changed.wait(lock, [&] {
        return m_bStop || IsPassed(nJob) || m_nWanted == nJob || m_nHeld - job.nHeld + nBytes <= kMostAhead;
    });
    job.bDropped = m_bStop || IsPassed(nJob);
    if (job.bDropped) return false;
    m_nHeld += nBytes - job.nHeld;
    job.nHeld = nBytes;
    return true;
}

bool ReadAhead::IsPassed(size_t nJob) const {
    return nJob < m_nReader && m_nWanted != nJob;
}

// Those that the reader has passed without asking, because the files are there after all.
void ReadAhead::DropJobsBefore(size_t nJob) {
    for (size_t n = m_nReader; n < nJob; ++n) {
        if (m_jobs[n].state == State::kDone) Release(&m_jobs[n]);
    }
}

void ReadAhead::Release(Job* pJob) {
    m_nHeld -= pJob->nHeld;
    pJob->nHeld = 0;
    pJob->pMade = nullptr;
}
