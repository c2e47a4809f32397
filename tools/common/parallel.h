// The same work on many items, on all cores, with its output in the order of the items.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace tools {

// Takes the next piece of an item's output.
using Sink = std::function<void(std::string_view piece)>;

// Writes the output of one item to the sink, in as many pieces as it likes, and returns its result: any
// bytes.
using Job = std::function<std::string(size_t item, const Sink& sink)>;

// Gets the output and the result of the items, in order.
struct Taker {
    std::function<void(size_t item, std::string_view piece)> piece;
    // Returns whether to go on. result is null if the process that had the item died.
    std::function<bool(size_t item, const std::string* result)> done;
};

// Runs the job for the items 0 to count - 1 in so many processes, or here if it is one; 0 means one for each
// core. Only what the job writes comes back. Memory is bounded: a process that is far ahead of the item to be
// taken next waits.
//
// Call it before the program has other threads. No process is left when it returns.
void RunInOrder(size_t count, unsigned processes, const Job& job, const Taker& taker);

}  // namespace tools
