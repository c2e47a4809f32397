// Times of a device's blocks, for devices of several habits.
#include "host/desktop/drift_tracker.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

constexpr int kRate = 44100, kFrames = 384;
constexpr double kLength = kFrames * 1e9 / kRate, kMillisecond = 1e6, kAny = 1e18;
constexpr uint64_t kBegin = 5'000'000'000;

struct Figures {
    double most_behind = 0;               // ns from a block's end to its mixing
    double shortest = kAny, longest = 0;  // from block to block, against its length
    double most_wait = 0;
};

// asked(n, earliest): when block n is requested, given when the last one was done. Figures of the blocks from
// `first` on.
Figures Serve(int blocks, int first, const std::function<double(int, double)>& asked, bool held = false) {
    host::DriftTracker clock(kRate, kFrames);
    if (held) clock.HoldToClock();
    Figures figures;
    double done = 0, last = 0;
    for (int n = 0; n < blocks; ++n) {
        const double now = std::max(asked(n, done), done);
        const host::DriftTracker::Block block = clock.Next(kBegin + static_cast<uint64_t>(now));
        done = now + static_cast<double>(block.wait);
        if (block.silent) continue;
        const double time = static_cast<double>(block.time - kBegin), behind = done - (time + kLength);
        EXPECT_GE(behind, -2.0) << n;  // never ends in the future
        if (n >= first) {
            figures.most_behind = std::max(figures.most_behind, behind);
            figures.shortest = std::min(figures.shortest, (time - last) / kLength);
            figures.longest = std::max(figures.longest, (time - last) / kLength);
            figures.most_wait = std::max(figures.most_wait, static_cast<double>(block.wait));
        }
        last = time;
    }
    return figures;
}

double Jitter(int n, double most) {
    return most * ((n * 7919) % 101) / 100;
}

// The device is late for good from block 2000 on.
auto Standstill(double length, double jitter = 0) {
    return [=](int n, double) { return n * kLength + Jitter(n, jitter) + (n >= 2000 ? length : 0); };
}

TEST(DriftTracker, KeepsUpWithTheDevicesHabit) {
    constexpr double kEven = 1e-6, kSteered = 0.0011, ms = kMillisecond;
    const struct {
        const char* habit;
        std::function<double(int, double)> asked;
        int blocks, first;
        double most_behind, most_wait;
        double least_step, most_step;  // difference to a block's length
        bool held = false;
    } rows[] = {
        {"even", [](int n, double) { return n < 4 ? 0 : (n - 4) * kLength; }, 20000, 1000, 1.5 * ms, 0, kEven,
         kEven},
        {"jitter", [](int n, double) { return n * kLength + Jitter(n, 3e6); }, 20000, 1000, 5 * ms, kAny,
         kEven, kEven},
        // The later one of a pair may not lie in the future.
        {"bursts", [](int n, double) { return n / 2 * 2 * kLength; }, 20000, 1000, kLength + 1.5 * ms, 0,
         kEven, kEven},
        // A driver that takes blocks as fast as it gets them is held to the clock, once that is known.
        {"no pace", [](int n, double done) { return done + kLength - 0.8e6 + Jitter(n, 0.5e6); }, 6000, 1500,
         1.5 * ms, kAny, kEven, kEven},
        // On a busy machine such a driver is late now and then, and catches up.
        {"held", [](int n, double done) { return done + kLength - 0.8e6 + (n % 40 == 0 ? 30e6 : 0); }, 20000,
         100, 40 * ms, kAny, kEven, kEven, true},
        {"slow", [](int n, double) { return n * kLength * 1.0003 + Jitter(n, 1e6); }, 200000, 1000, 8 * ms,
         0.5 * ms, kSteered, kSteered},
        {"fast", [](int n, double) { return n * kLength * 0.9997 + Jitter(n, 1e6); }, 200000, 1000, 8 * ms,
         0.5 * ms, kSteered, kSteered},
        // It suddenly requests its blocks some milliseconds earlier, and is not kept waiting for long.
        {"early", [](int n, double) { return n * kLength * 0.9995 + 20e6 - (n >= 2000 ? 4e6 : 0); }, 20000,
         2600, 8 * ms, 0.5 * ms, 0.0041, kSteered},
        // ... and goes on to do so, so that it waits for long; it still has a pace of its own.
        {"ever earlier",
         [](int n, double) {
             return n * kLength + 60e6 - (n >= 2000 ? 8e6 + std::min(n - 2000, 1150) * kLength * 0.003 : 0);
         },
         8000, 4500, 8 * ms, 0.5 * ms, 0.0041, kSteered},
        // A short standstill is made up for in small steps, within two seconds (230 blocks) ...
        {"30 ms", Standstill(30 * ms), 20000, 2230, 5 * ms, 0.5 * ms, kEven, 0.08},
        {"95 ms", Standstill(95 * ms), 20000, 2230, 5 * ms, 0.5 * ms, kEven, 0.08},
        {"95 ms, all of it", Standstill(95 * ms), 20000, 1000, 96.5 * ms, 0, kEven, 0.081},
        {"60 ms and jitter", Standstill(60 * ms, 2 * ms), 20000, 2230, 7 * ms, 1 * ms, 0.0041, 0.081},
        // ... a longer one at once.
        {"120 ms", Standstill(120 * ms), 5000, 2001, 1.5 * ms, 0, kEven, kEven},
        {"3 s", Standstill(3000 * ms), 5000, 2001, 1.5 * ms, 0, kEven, kEven},
    };
    for (const auto& row : rows) {
        const Figures f = Serve(row.blocks, row.first, row.asked, row.held);
        EXPECT_LT(f.most_behind, row.most_behind) << row.habit;
        EXPECT_LE(f.most_wait, row.most_wait) << row.habit;
        EXPECT_GT(f.shortest, 1 - row.least_step) << row.habit;
        EXPECT_LT(f.longest, 1 + row.most_step) << row.habit;
    }
}

// A device may request its whole buffer at once before it keeps its pace.
TEST(DriftTracker, ALargeFirstFill) {
    for (const int fill : {2, 7, 10, 12, 17, 23}) {
        const auto asked = [=](int n, double done) {
            return n < fill ? done : (n - fill) * kLength * 0.9996 + Jitter(n, 0.5e6);
        };
        EXPECT_LT(Serve(60000, fill + 10, asked).most_wait, 0.7e6) << fill;
    }
}

}  // namespace
