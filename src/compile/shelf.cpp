#include "compile/shelf.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <thread>

#include "platform/files/lookup.h"
#include "platform/substitutes/substitute.h"

namespace compile {
namespace {

uint64_t BytesOf(const Sound& sound) {
    return sound.samples.size() * sizeof(int16_t);
}

uint64_t BytesOfFile(const std::string& path) {
    std::error_code error;
    const uint64_t bytes = std::filesystem::file_size(path, error);
    return error ? 0 : bytes;
}

}  // namespace

uint64_t Shelf::Room() {
    static const uint64_t most = [] {
        const long pages = sysconf(_SC_PHYS_PAGES), page = sysconf(_SC_PAGESIZE);
        const uint64_t memory =
            pages > 0 && page > 0 ? static_cast<uint64_t>(pages) * static_cast<uint64_t>(page) : 0;
        return std::clamp<uint64_t>(memory / 4, uint64_t{128} << 20, uint64_t{1} << 30);
    }();
    return most;
}

unsigned Cores() {
    return std::max(1u, std::thread::hardware_concurrency());
}

void OnAllCores(size_t count, const std::function<void(size_t)>& work) {
    std::atomic<size_t> next = 0;
    std::mutex mutex;
    std::exception_ptr failure;  // the first
    const auto run = [&] {
        try {
            for (size_t i = next++; i < count; i = next++) work(i);
        } catch (...) {
            const std::lock_guard lock(mutex);
            if (!failure) failure = std::current_exception();
            next = count;
        }
    };
    const size_t cores = std::min<size_t>(count, Cores());
    std::vector<std::thread> threads;
    try {
        for (size_t i = 1; i < cores; ++i) threads.emplace_back(run);
    } catch (const std::system_error&) {
        // Those that could be started help, or none.
    }
    run();
    for (std::thread& thread : threads) thread.join();
    if (failure) std::rethrow_exception(failure);
}

// A file that yields little or nothing costs its reading.
void Shelf::LoadOne(const std::string& name, const std::string& path, Entry* entry) {
    if (decoded_ > kMostDecoded || (stopped && stopped())) {
        entry->ms = kLongMs;
        return;
    }
    SoundPtr sound = LoadSound(name);
    decoded_ += std::max(BytesOfFile(path), sound ? BytesOf(*sound) : 0);
    if (!sound) return;
    entry->ms = sound->Ms();
    if ((kept_ += BytesOf(*sound)) <= Room())
        entry->sound = std::move(sound);
    else
        kept_ -= BytesOf(*sound);
}

void Shelf::Load(const std::vector<std::string>& names) {
    struct Missing {
        const std::string *name, *path;
        Entry* entry;
    };
    std::vector<Missing> missing;
    for (const std::string& name : names) {
        auto [path, fresh] = paths_.try_emplace(name);
        if (fresh) {
            const std::string found = FindNamed(name);
            const auto paths =
                found.empty() ? SubstitutePaths(name, MediaKind::kSound) : std::vector<std::string>{found};
            path->second = paths.empty() ? "" : paths[0];
        }
        if (path->second.empty()) continue;
        const auto [entry, first] = entries_.try_emplace(path->second);
        if (!entry->second.sound && (first || entry->second.ms >= 0))
            missing.push_back({&path->first, &entry->first, &entry->second});
    }
    std::sort(missing.begin(), missing.end(),
              [](const Missing& a, const Missing& b) { return a.entry < b.entry; });
    const auto same = [](const Missing& a, const Missing& b) { return a.entry == b.entry; };
    missing.erase(std::unique(missing.begin(), missing.end(), same), missing.end());
    OnAllCores(missing.size(),
               [&](size_t i) { LoadOne(*missing[i].name, *missing[i].path, missing[i].entry); });
}

void Shelf::KeepOnly(const std::vector<std::string>& names) {
    std::unordered_map<std::string, SoundPtr> kept;
    for (const std::string& name : names) {
        if (SoundPtr sound = Find(name)) kept[paths_[name]] = std::move(sound);
    }
    kept_ = 0;
    for (auto& [path, entry] : entries_) {
        const auto it = kept.find(path);
        entry.sound = it == kept.end() ? nullptr : it->second;
        if (entry.sound) kept_ += BytesOf(*entry.sound);
    }
}

SoundPtr Shelf::Find(const std::string& name) const {
    const auto path = paths_.find(name);
    if (path == paths_.end()) return nullptr;
    const auto entry = entries_.find(path->second);
    return entry == entries_.end() ? nullptr : entry->second.sound;
}

double Shelf::Ms(const std::string& name) const {
    const auto path = paths_.find(name);
    const auto entry = path == paths_.end() ? entries_.end() : entries_.find(path->second);
    return entry == entries_.end() ? -1 : entry->second.ms;
}

}  // namespace compile
