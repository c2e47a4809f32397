#include "platform/substitutes/readahead.h"

#include <algorithm>
#include <new>
#include <system_error>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

// Limit for finished but unrequested substitutes and those in progress, in bytes.
constexpr size_t kMaxAhead = size_t{64} << 20;
constexpr size_t kMaxThreads = 8;

// Each conversion needs about as much memory as the previous one has freed. By default the allocator returns
// such blocks to the system, and faulting them in again, page by page, takes a quarter of a load's time.
void KeepFreedMemory(bool bKeep) {
#ifdef __GLIBC__
    constexpr int kUsual = 128 << 10;
    mallopt(M_MMAP_THRESHOLD, bKeep ? 32 << 20 : kUsual);
    mallopt(M_TRIM_THRESHOLD, bKeep ? static_cast<int>(kMaxAhead) : kUsual);
    if (!bKeep) malloc_trim(0);
#endif
}

}  // namespace

void ReadAhead::Expect(MediaKind kind, std::vector<std::string> names) {
    Stop();
    m_kind = kind;
    for (std::string& name : names) {
        if (!m_indexes.emplace(name, m_jobs.size()).second) continue;
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
    m_indexes.clear();
    m_jobs.clear();
    m_kind = MediaKind::kNone;
    m_nNext = m_nReader = m_nReserved = 0;
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
    const auto it = m_indexes.find(name);
    m_keptKind = it != m_indexes.end() ? m_kind : KindOfName(name);
    m_pKept = it != m_indexes.end() ? TakeJob(it->second) : nullptr;
    if (!m_pKept) m_pKept = MakeHere(name, m_keptKind);
    m_keptName = name;
    return {m_pKept, m_keptKind, true};
}

static size_t BytesOf(const Substitute& made) {
    return (made.pBytes ? made.pBytes->Size() : 0) + (made.pDecoded ? made.pDecoded->Bytes() : 0);
}

// Null when it must be made by the caller.
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
    const Make make = m_prepare(name, kind);
    if (!make) return std::make_shared<Substitute>();
    if (!m_jobs.empty()) {
        if (!m_bConverts) KeepFreedMemory(true);
        m_bConverts = true;
        StartThreads();
    }
    return make(nullptr);
}

// One thread per core: while the reader waits for one of them, all cores are busy.
void ReadAhead::StartThreads() {
    const size_t nCores = std::thread::hardware_concurrency();
    if (!m_threads.empty() || nCores < 2 || m_nReader >= m_jobs.size()) return;
    try {
        for (size_t n = 0; n < std::min(nCores, kMaxThreads); ++n) m_threads.emplace_back([this] { Work(); });
    } catch (const std::system_error&) {
        // Continue with the threads that did start, if any.
    }
}

void ReadAhead::Work() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [&] { return m_bStop || m_nNext >= m_jobs.size() || m_nReserved < kMaxAhead; });
        if (m_bStop || m_nNext >= m_jobs.size()) return;
        RunJob(&lock, m_nNext++);
    }
}

void ReadAhead::RunJob(std::unique_lock<std::mutex>* pLock, size_t nJob) {
    Job& job = m_jobs[nJob];  // the list does not change while threads run
    job.state = State::kRunning;
    pLock->unlock();
    SubstitutePtr pMade;
    try {
        const Make make = m_prepare(job.name, m_kind);
        pMade = make ? make([&](size_t nBytes) { return TryReserve(nJob, nBytes); })
                     : std::make_shared<Substitute>();
    } catch (const std::bad_alloc&) {
        pMade = nullptr;  // the reader tries it again
    }
    if (pMade && pMade->bOverBudget) pMade = nullptr;  // the reader may have spent less by then
    const size_t nMade = pMade ? BytesOf(*pMade) : 0;
    pLock->lock();
    job.state = State::kDone;
    m_nReserved += nMade - job.nReserved;
    job.nReserved = nMade;
    job.pMade = std::move(pMade);
    if (job.bDropped || IsSkipped(nJob)) Release(&job);
    m_changed.notify_all();
}

bool ReadAhead::TryReserve(size_t nJob, size_t nBytes) {
    std::unique_lock lock(m_mutex);
    Job& job = m_jobs[nJob];
    m_changed.wait(lock, [&] {
        return m_bStop || IsSkipped(nJob) || m_nWanted == nJob ||
               m_nReserved - job.nReserved + nBytes <= kMaxAhead;
    });
    job.bDropped = m_bStop || IsSkipped(nJob);
    if (job.bDropped) return false;
    m_nReserved += nBytes - job.nReserved;
    job.nReserved = nBytes;
    return true;
}

bool ReadAhead::IsSkipped(size_t nJob) const {
    return nJob < m_nReader && m_nWanted != nJob;
}

// Releases the jobs that the reader skipped because their files exist.
void ReadAhead::DropJobsBefore(size_t nJob) {
    for (size_t n = m_nReader; n < nJob; ++n) {
        if (m_jobs[n].state == State::kDone) Release(&m_jobs[n]);
    }
}

void ReadAhead::Release(Job* pJob) {
    m_nReserved -= pJob->nReserved;
    pJob->nReserved = 0;
    pJob->pMade = nullptr;
}
