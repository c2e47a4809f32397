#include "render/pacing.h"

#include <algorithm>

#include "display/ddraw.h"
#include "playback/playback.h"
#include "system/globals.h"

namespace render {
namespace {

constexpr uint64_t kMillisecond = 1'000'000;

// Of a frame that reads the clock at this reading.
int32_t ChartTimeAt(uint64_t clock) {
    return static_cast<int32_t>(static_cast<uint32_t>(g_dwSeekTime) - g_dwStartTime +
                                static_cast<uint32_t>(clock / kMillisecond));
}

}  // namespace

void Pacer::SetDue(std::vector<int64_t> times) {
    due_ = std::move(times);
    std::sort(due_.begin(), due_.end());
    next_due_ = 0;
}

uint64_t Pacer::Wake(uint64_t now, uint64_t end) {
    if (!added_) players_end_ = end;
    const int32_t chart_now = ChartTimeAt(now);
    while (next_due_ < due_.size() && due_[next_due_] <= chart_now) ++next_due_;
    if (next_due_ == due_.size() || g_bPaused) return players_end_;
    const uint64_t due = now + static_cast<uint64_t>(due_[next_due_] - chart_now) * kMillisecond;
    next_added_ = due < players_end_;
    next_stamp_ = static_cast<uint32_t>(due / kMillisecond);
    return std::min(due, players_end_);
}

void Pacer::OnShown() {
    if (!added_) players_stamp_ = g_pDDraw->m_dwThisPresent;
    // Becomes the stamp of the previous presentation: the next one sleeps after an added frame, and does
    // after one of the player's what it would have done without them.
    g_pDDraw->m_dwThisPresent = next_added_ ? next_stamp_ : players_stamp_;
    added_ = next_added_;
    next_added_ = false;
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
