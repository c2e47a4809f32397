// soak [--hours N] CHART...: plays the charts for so many virtual hours (24) on the headless host, as a user
// who seeks, pauses, changes the speed and loads another chart all the time; the sound is drained. Prints
// what the process holds each hour, always with the first chart loaded. Exit code 1 when that grows after the
// first hour.
#include <malloc.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>

#include "host/headless/sound.h"
#include "shell/shell.h"
#include "support/program.h"
#include "support/tempfolder.h"

namespace {

using namespace headless;

constexpr uint64_t kHour = 3'600'000, kSettle = 20'000;  // ms
constexpr size_t kMayGrow = 64 << 10, kMayGrowResident = 8 << 20;

struct Held {
    size_t used, resident;  // bytes
    long handles, threads;
};

std::vector<std::string> g_charts;
std::mt19937 g_random(1);  // the same on every run
long g_acts = 0, g_loads = 0, g_frames = 0, g_blocks = 0;
bool g_grew = false;

size_t Number(const char* file, const char* key) {
    std::ifstream in(file);
    for (std::string word; in >> word;) {
        size_t number = 0;
        if (word == key && in >> number) return number;
    }
    return 0;
}

// What the host has captured for tests grows with the hours and is no part of the program.
size_t Captured() {
    size_t bytes = Log().capacity() + Titles().capacity() * sizeof(std::string) +
                   FileDialogs().capacity() * sizeof(FileDialog);
    for (const std::string& title : Titles()) bytes += title.capacity() > 15 ? title.capacity() + 17 : 0;
    for (const FileDialog& dialog : FileDialogs()) {
        for (const std::string* text : {&dialog.title, &dialog.folder, &dialog.answer, &dialog.name,
                                        &dialog.extension, &dialog.filter.name, &dialog.filter.patterns})
            bytes += text->capacity() > 15 ? text->capacity() + 17 : 0;
    }
    return bytes;
}

Held Look() {
    const struct mallinfo2 memory = mallinfo2();
    const auto handles = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    return {memory.uordblks + memory.hblkhd - Captured(), Number("/proc/self/status", "VmRSS:") << 10,
            static_cast<long>(handles), static_cast<long>(Number("/proc/self/status", "Threads:"))};
}

void Row(uint64_t hour) {
    static Held first;
    const Held now = Look();
    if (hour == 1) first = now;
    std::printf("| %llu | %ld | %ld | %ld | %zu | %zu | %ld | %ld |\n", static_cast<unsigned long long>(hour),
                g_acts, g_loads, g_frames, now.used >> 10, now.resident >> 10, now.handles, now.threads);
    std::fflush(stdout);
    g_grew = g_grew || now.used > first.used + kMayGrow || now.resident > first.resident + kMayGrowResident ||
             now.handles > first.handles || now.threads > first.threads;
}

void Load(uint64_t ms, const std::string& chart, bool dialog) {
    ++g_loads;
    At(ms, dialog ? DoubleClick() : Drop(chart));
    if (dialog) At(ms + 200, ChooseFile(chart));  // the dialog opens with the next frame
    At(ms + 1000, Key(13));
}

void Act(uint64_t ms) {
    ++g_acts;
    const auto roll = [](unsigned sides) { return static_cast<int>(g_random() % sides); };
    switch (roll(6)) {
        case 0:
            return Load(ms, g_charts[static_cast<size_t>(roll(static_cast<unsigned>(g_charts.size())))],
                        roll(2));
        case 1:
            return At(ms, Remote(WM_REMOTE_SPEED, 10 + roll(790)));
        case 2:
            return At(ms, Remote(WM_REMOTE_RESTART));
        case 3:
            At(ms, Key(32));
            return At(ms + static_cast<uint64_t>(roll(5000)), Key(32));
        default:
            return At(ms, Remote(WM_REMOTE_SEEK, roll(120) - 1));
    }
}

// Plans one hour: acts, then the first chart again, then the row.
void Plan(uint64_t hour, uint64_t hours) {
    const uint64_t end = (hour + 1) * kHour;
    for (uint64_t ms = hour * kHour + 1000; ms < end - 2 * kSettle; ms += 5000 + g_random() % 20000) Act(ms);
    Load(end - kSettle, g_charts[0], true);
    At(end, Call([=] {
           Row(hour + 1);
           if (hour + 1 < hours)
               Plan(hour + 1, hours);
           else
               At(end + 1, Close());
       }));
}

}  // namespace

int main(int argc, char** argv) {
    uint64_t hours = 24;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--hours") == 0 && i + 1 < argc)
            hours = std::strtoull(argv[++i], nullptr, 10);
        else
            g_charts.push_back(std::filesystem::absolute(argv[i]).string());
    }
    if (g_charts.empty() || hours == 0) return std::fputs("usage: soak [--hours N] CHART...\n", stderr), 2;
    std::puts("| hour | acts | loads | frames | used, KiB | resident, KiB | handles | threads |");
    std::puts("| --- | --- | --- | --- | --- | --- | --- | --- |");
    test::RunOptions options;
    options.end_ms = hours * kHour + 1000;
    options.prepare = [=] {
        KeepPicture(false);
        OnFrame([](const Frame&) { ++g_frames; });
        SetSoundSink(
            [](void*, const float* samples, int frames, int) {
                for (int i = 0; i < 2 * frames; ++i)
                    if (!std::isfinite(samples[i])) std::abort();
                ++g_blocks;
            },
            nullptr);
        Plan(0, hours);
    };
    const test::RunResult run =
        test::RunProgram("-P " + test::TempFolder::Backslashes(g_charts[0]), {}, options);
    for (const std::string& fault : run.faults) std::printf("%s\n", fault.c_str());
    const bool ran = run.exit_code == 0 && run.boxes.empty() && run.faults.empty() && g_blocks > 0;
    std::printf("%ld blocks of sound; exit code %d; %s\n", g_blocks, run.exit_code,
                g_grew ? "IT GREW" : "nothing grew after the first hour");
    return ran && !g_grew ? 0 : 1;
}
