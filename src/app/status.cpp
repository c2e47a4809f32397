#include "app/status.h"

#include "compile/modern.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "chart/bms.h"
#include "host/host.h"
#include "platform/files/text.h"
#include "platform/timer.h"
#include "platform/window/dialog.h"
#include "playback/playback.h"
#include "report/losses.h"
#include "system/globals.h"

namespace app {
namespace {

State PlayingState() {
    if (g_bPlaying) return g_bPaused ? State::kEnded : State::kRunning;
    if (!g_bPaused) return State::kHeld;
    return g_dwPauseTime ? State::kPaused : State::kIdle;
}

// Of the compiled chart: the last measure that has begun at that time, -1 before the first.
int MeasureAtTime(const CBMS& chart, double time) {
    const BmsMeasure* first = chart.m_pMeasure;
    const BmsMeasure* after =
        std::upper_bound(first, first + chart.m_nMeasure, time,
                         [](double t, const BmsMeasure& measure) { return t < measure.dStart; });
    return static_cast<int>(after - first) - 1;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

}  // namespace

const char* StateName(State state) {
    static constexpr const char* kNames[] = {"loading", "idle", "running", "paused", "held", "ended"};
    return kNames[static_cast<int>(state)];
}

void UpdatePlaying(Status* status) {
    status->host = g_bHost != 0;
    status->speed = std::round(static_cast<double>(g_fSpeed) * 100) / 100;
    status->sounding = !host::SoundIsPending();
    if (!g_pBMS || !g_pBMS->m_pMeasure || g_nBarCount == 0) return;
    status->state = PlayingState();
    status->tempo = g_dBPM;
    // Between a start or a resume and its next frame the frame's clock is older than the start's.
    const uint32_t now = status->state == State::kRunning ? timeGetTime() : g_dwNowTime;
    const auto elapsed = static_cast<int32_t>(now - g_dwStartTime);
    status->time_ms = g_dwSeekTime + std::max(elapsed, 0);
    // A seek sets the clock one millisecond before the bar.
    const double time = status->time_ms + 1;
    status->measure = MeasureAtTime(*g_pBMS, time);
    if (status->measure < 0) return;
    const BmsMeasure& measure = g_pBMS->m_pMeasure[status->measure];
    status->place =
        measure.dDuration > 0 ? std::clamp((time - measure.dStart) / measure.dDuration, 0.0, 1.0) : 0;
}

void UpdateChart(Status* status) {
    status->path = OpenedFile();
    status->title = g_pBMS && g_pBMS->m_pszTitle ? ToUtf8(g_pBMS->m_pszTitle) : "";
    status->lines = ReadChartLines(status->path);
    status->missing = 0;
    if (!g_pBMS || !g_pDSound || !g_pDDraw) return;
    const report::Losses losses = report::CountLosses(*g_pBMS, *g_pDSound, *g_pDDraw);
    status->missing = losses.sounds_missing + losses.pictures_missing;
}

nlohmann::json ToJson(const Status& status) {
    const ChartLines::Place place = status.lines.Of(status.measure);
    return {{"pid", getpid()},
            {"version", LUMETRA_VERSION},
            {"file", ToUtf8(status.path)},
            {"uri", PathToUri(status.path)},
            {"title", status.title},
            {"state", StateName(status.state)},
            {"host", status.host},
            {"modern", compile::PlaysModern()},
            {"watch", status.watch},
            {"refused", ToUtf8(status.refused)},
            {"measure", status.measure},
            {"place", status.place},
            {"time_ms", status.time_ms},
            {"line", place.line},
            {"column", place.column},
            {"tempo", status.tempo},
            {"speed", status.speed},
            {"missing", status.missing},
            {"sounding", status.sounding},
            {"modal", status.modal}};
}

std::string PathToUri(const std::string& path) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    static constexpr std::string_view kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string uri = path.empty() ? "" : "file://";
    for (const char c : path) {
        if (kPlain.find(c) != std::string_view::npos) {
            uri += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            uri += {'%', kHex[byte >> 4], kHex[byte & 15]};
        }
    }
    return uri;
}

std::string PathFromUri(const std::string& uri) {
    for (const std::string_view head : {"file://localhost/", "file:///", "file:/"}) {
        if (uri.compare(0, head.size(), head) != 0) continue;
        if (uri.compare(head.size(), 1, "/") == 0) return "";  // another machine's
        std::string path = "/";
        for (size_t at = head.size(); at < uri.size(); ++at) {
            const int high = uri[at] == '%' && at + 2 < uri.size() ? HexDigit(uri[at + 1]) : -1;
            const int low = high >= 0 ? HexDigit(uri[at + 2]) : -1;
            path += low < 0 ? uri[at] : static_cast<char>(high * 16 + low);
            if (low >= 0) at += 2;
        }
        return path.find('\0') == std::string::npos ? path : "";
    }
    return "";
}

std::string ToUtf8(const std::string& text) {
    return DisplayText(text);
}

}  // namespace app
