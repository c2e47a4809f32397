// Times of a device's blocks, for devices of several habits.
#include "host/desktop/drift_tracker.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

constexpr int kRate = 44100, kFrames = 384;
constexpr double kLength = kFrames * 1e9 / kRate;
constexpr uint64_t kBegin = 5'000'000'000;

struct Figures {
    double most_behind = 0;               // ns from a block's end to its mixing
    double shortest = 1e18, longest = 0;  // from block to block
    double most_wait = 0;
};

// asked(n, earliest): when block n is asked for, given when the last was done. Figures of the blocks from
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
            figures.shortest = std::min(figures.shortest, time - last);
            figures.longest = std::max(figures.longest, time - last);
            figures.most_wait = std::max(figures.most_wait, static_cast<double>(block.wait));
        }
        last = time;
    }
    return figures;
}

double Jitter(int n, double most) {
    return most * ((n * 7919) % 101) / 100;
}

TEST(DriftTracker, TimesAreEvenWhateverTheDevicesHabit) {
    constexpr double kAny = 1e18;
    const struct {
        const char* habit;
        std::function<double(int, double)> asked;
        int blocks, first;
        double most_behind, most_wait;
        bool held = false;
    } rows[] = {
        {"even", [](int n, double) { return n < 4 ? 0 : (n - 4) * kLength; }, 20000, 1000, 1.5e6, 0},
        {"jitter", [](int n, double) { return n * kLength + Jitter(n, 3e6); }, 20000, 1000, 5e6, kAny},
        // The later one of a pair may not lie in the future.
        {"bursts", [](int n, double) { return n / 2 * 2 * kLength; }, 20000, 1000, kLength + 1.5e6, 0},
        // A driver that takes what it gets as fast as it gets it is held to the clock, once that is known.
        {"no pace", [](int n, double done) { return done + kLength - 0.8e6 + Jitter(n, 0.5e6); }, 6000, 1500,
         1.5e6, kAny},
        // On a busy machine such a driver is late now and then, and catches up.
        {"held", [](int n, double done) { return done + kLength - 0.8e6 + (n % 40 == 0 ? 30e6 : 0); }, 20000,
         100, 40e6, kAny, true},
        {"standstill", [](int n, double) { return n * kLength + (n >= 2000 ? 3e9 : 0); }, 5000, 2500, 2e6,
         kAny},
    };
    for (const auto& row : rows) {
        const Figures f = Serve(row.blocks, row.first, row.asked, row.held);
        EXPECT_LT(f.most_behind, row.most_behind) << row.habit;
        EXPECT_LE(f.most_wait, row.most_wait) << row.habit;
        EXPECT_NEAR(f.shortest, kLength, 2) << row.habit;
        EXPECT_NEAR(f.longest, kLength, 2) << row.habit;
    }
}

TEST(DriftTracker, ClocksThatRunFastOrSlowAreFollowed) {
    for (const double pace : {0.9997, 0.9999, 1.0001, 1.0003}) {
        const Figures f =
            Serve(200000, 1000, [=](int n, double) { return n * kLength * pace + Jitter(n, 1e6); });
        EXPECT_LT(f.most_behind, 8e6) << pace;
        EXPECT_NEAR(f.shortest / kLength, 1, 0.0011) << pace;
        EXPECT_NEAR(f.longest / kLength, 1, 0.0011) << pace;
        EXPECT_LT(f.most_wait, 0.5e6) << pace;
    }
}

// A device that suddenly wants its blocks some milliseconds earlier is not kept waiting for long.
TEST(DriftTracker, ADeviceThatTurnsEarly) {
    const auto asked = [](int n, double) { return n * kLength * 0.9995 + 20e6 - (n >= 2000 ? 4e6 : 0); };
    EXPECT_LT(Serve(20000, 2600, asked).most_wait, 0.5e6);
    EXPECT_NEAR(Serve(20000, 100, asked).shortest / kLength, 1, 0.0041);
}

// A device may ask for its whole buffer at once before it keeps its pace.
TEST(DriftTracker, ALargeFirstFill) {
    for (const int fill : {2, 7, 10, 12, 17, 23}) {
        const auto asked = [=](int n, double done) {
            return n < fill ? done : (n - fill) * kLength * 0.9996 + Jitter(n, 0.5e6);
        };
        EXPECT_LT(Serve(60000, fill + 10, asked).most_wait, 0.7e6) << fill;
    }
}

}  // namespace
