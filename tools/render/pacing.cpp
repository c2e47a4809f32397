#include "render/pacing.h"

#include <algorithm>
#include <iterator>

#include "display/ddraw.h"
#include "host/headless/headless.h"
#include "playback/playback.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"
#include "system/globals.h"

namespace render {
namespace {

constexpr uint64_t kMillisecond = 1'000'000, kGrid = 15 * kMillisecond;
constexpr uint64_t kSettled = 10'000 * kMillisecond;    // of silence: no earlier sound matters then
constexpr uint64_t kMostSkip = 600'000 * kMillisecond;  // so that a wish to stop is heard

// Of a frame that reads the clock at this reading.
int32_t ChartTimeAt(uint64_t clock) {
    return static_cast<int32_t>(static_cast<uint32_t>(g_dwSeekTime) - g_dwStartTime +
                                static_cast<uint32_t>(clock / kMillisecond));
}

}  // namespace

void Pacer::Set(std::vector<int64_t> times, bool add, bool skip) {
    due_ = std::move(times);
    std::sort(due_.begin(), due_.end());
    next_due_ = 0;
    add_ = add;
    skip_ = skip;
}

uint64_t Pacer::Wake(uint64_t now, uint64_t end) {
    if (!added_) players_end_ = end;
    const int32_t chart_now = ChartTimeAt(now);
    while (next_due_ < due_.size() && due_[next_due_] <= chart_now) ++next_due_;
    if (next_due_ == due_.size() || g_bPaused) return players_end_;
    const uint64_t due = now + static_cast<uint64_t>(due_[next_due_] - chart_now) * kMillisecond;
    if (due > players_end_) {
        if (skip_) SkipTo(due);
        return players_end_;
    }
    next_added_ = add_ && due < players_end_;
    next_stamp_ = static_cast<uint32_t>(due / kMillisecond);
    return next_added_ ? due : players_end_;
}

// In the player's steps, because where blocks of sound end decides their last bit; over long silence in one.
void Pacer::SkipTo(uint64_t due) {
    const bool silent = due - players_end_ > kSettled && !IsSounding();
    const uint64_t steps_end = silent ? players_end_ + kSettled : due;
    for (; players_end_ + kGrid <= steps_end; players_end_ += kGrid) headless::SetClock(players_end_);
    if (silent) players_end_ += std::min(due - players_end_, kMostSkip) / kGrid * kGrid;
}

void Pacer::OnShown() {
    if (!added_) players_stamp_ = g_pDDraw->m_dwThisPresent;
    // Becomes the stamp of the previous presentation: the next one sleeps after an added frame, and does
    // after one of the player's what it would have done without them.
    g_pDDraw->m_dwThisPresent = next_added_ ? next_stamp_ : players_stamp_;
    added_ = next_added_;
    next_added_ = false;
}

bool IsSounding() {
    const auto sounds = [](CDSBuffer* sound) {
        return sound && sound->GetDSBuffer() && HasSoundAhead(*sound->GetDSBuffer());
    };
    return std::any_of(std::begin(g_pDSound->m_pSlot), std::end(g_pDSound->m_pSlot), sounds);
}

std::vector<int64_t> DueTimes() {
    std::vector<int64_t> times;
    const auto add = [&times](const BmsEvent* list, int32_t count, int64_t after) {
        for (int32_t i = 0; i < count; ++i) {
            if (!list[i].bDone) times.push_back(list[i].nTime + after);
        }
    };
    add(g_pBarList, g_nBarCount, 1);  // a bar is passed only after its time
    add(g_pTempoList, g_nTempoCount, 0);
    add(g_pBgmList, g_nBgmCount, 0);
    add(g_pNoteList, g_nNoteCount, 0);
    add(g_pBgaList, g_nBgaCount, 0);
    return times;
}

}  // namespace render
