// The decoded sounds of one chart.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "compile/sound.h"

namespace compile {

unsigned Cores();  // at least 1

// Runs work(0) to work(count - 1), in any order, on all cores. An exception of one ends the others and comes
// here.
void OnAllCores(size_t count, const std::function<void(size_t)>& work);

// Decodes at most kMostDecoded in all, a file counting no less than its own bytes, so that a chart of many
// long files ends.
class Shelf {
public:
    static constexpr uint64_t kMostDecoded = uint64_t{4} << 30;  // bytes
    // Bytes of sounds that are kept: a quarter of the machine's memory, at most 1 GiB.
    static uint64_t Room();
    // What a sound is taken to last that is not decoded any more: longer than any, so that it is not mixed.
    static constexpr double kLongMs = 2'000'000;

    std::function<bool()> stopped;  // once true, no sound is loaded any more; when set

    // Loads those of the names that are not there, on all cores. Not while others use the shelf.
    void Load(const std::vector<std::string>& names);
    // Gives up all others.
    void KeepOnly(const std::vector<std::string>& names);
    SoundPtr Find(const std::string& name) const;  // null: there is none, or no room for it
    double Ms(const std::string& name) const;      // negative: not known

private:
    struct Entry {
        SoundPtr sound;
        double ms = -1;
    };
    void LoadOne(const std::string& name, const std::string& path, Entry* entry);

    std::unordered_map<std::string, Entry> entries_;  // by path
    std::unordered_map<std::string, std::string> paths_;
    std::atomic<uint64_t> kept_ = 0, decoded_ = 0;  // bytes
};

}  // namespace compile
