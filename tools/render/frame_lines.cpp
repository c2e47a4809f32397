#include "render/frame_lines.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "common/terminal.h"
#include "display/ddraw.h"
#include "host/headless/headless.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace render {
namespace {

std::string Format(const char* format, va_list args) {
    char line[512];
    const int length = std::vsnprintf(line, sizeof line, format, args);
    return std::string(line, static_cast<size_t>(std::clamp(length, 0, static_cast<int>(sizeof line) - 1)));
}

int PartsNumber(const void* surface) {
    for (int i = 0; i < DDRAW_PARTS; ++i) {
        if (g_pDDraw->m_apParts[i] == surface) return i;
    }
    return -1;
}

int SlotOf(const void* buffer) {
    for (int i = 0; i < SOUND_SLOTS; ++i) {
        const CDSBuffer* sound = g_pDSound->m_pSlot[i];
        if (sound && sound->m_pDSB == buffer) return i;
    }
    return -1;
}

}  // namespace

FrameLines* FrameLines::self_ = nullptr;

FrameLines::FrameLines() : previous_(g_pfnCallHook) {
    self_ = this;
    g_pfnCallHook = OnCall;
}

FrameLines::~FrameLines() {
    g_pfnCallHook = previous_;
    self_ = nullptr;
}

void FrameLines::Line(const char* format, ...) {
    va_list args;
    va_start(args, format);
    text_ += Format(format, args);
    va_end(args);
}

bool FrameLines::OnCall(const CallFacts& call, int64_t* result) {
    if (call.eCall == PlatformCall::kBltFast)
        self_->OnCopied(call);
    else if (call.eCall == PlatformCall::kPlay)
        self_->OnStarted(call.pObject);
    return self_->previous_ && self_->previous_(call, result);
}

void FrameLines::OnCopied(const CallFacts& copy) {
    if (!g_pDDraw || copy.pObject != g_pDDraw->m_pBack) return;
    const RECT& r = copy.source;
    char line[128];
    std::snprintf(line, sizeof line, "draw %d %d %d %d %d %d %d%s\n", copy.dest.left, copy.dest.top,
                  PartsNumber(copy.pFrom), r.left, r.top, r.right, r.bottom,
                  copy.nValue & DDBLTFAST_SRCCOLORKEY ? " key" : "");
    draws_ += line;
}

void FrameLines::OnStarted(const void* buffer) {
    const int slot = g_pDSound ? SlotOf(buffer) : -1;
    if (slot < 0) return;  // the device's own silent buffer
    const std::string name = tools::CleanText(g_pDSound->m_pSlot[slot]->m_szName);
    sounds_ += "sound " + std::to_string(slot) + " " + name + "\n";
}

void FrameLines::Begin() {
    lists_ = {{"bar", &g_pBarList, &g_nBarCount, {}},
              {"tempo", &g_pTempoList, &g_nTempoCount, {}},
              {"bgm", &g_pBgmList, &g_nBgmCount, {}},
              {"note", &g_pNoteList, &g_nNoteCount, {}},
              {"bga", &g_pBgaList, &g_nBgaCount, {}}};
    for (List& list : lists_) {
        // Seeking has marked the records before the start measure as done. Those of the first frame are not.
        list.done.assign(static_cast<size_t>(*list.count), 0);
        for (int32_t i = 0; i < *list.count; ++i)
            list.done[static_cast<size_t>(i)] = (*list.records)[i].nMeasure < g_nStartMeasure;
    }
}

void FrameLines::ReportFired(List* list) {
    for (int32_t i = 0; i < *list->count; ++i) {
        const BmsEvent& record = (*list->records)[i];
        char& done = list->done[static_cast<size_t>(i)];
        if (!record.bDone || done) continue;
        done = 1;
        // In bars and anchors the channel word holds a line of the screen.
        const bool has_channel = list->records != &g_pBarList && list->records != &g_pTempoList;
        Line("fire %s %d %.9g %d %d\n", list->name, record.nMeasure, record.dPos,
             has_channel ? record.nChannel : 0, record.nTime);
    }
}

const std::string& FrameLines::Take(int32_t now, bool fired) {
    text_.clear();
    Line("frame %lld %llu %d %d %.2f\n", static_cast<long long>(frames_++),
         static_cast<unsigned long long>(headless::Now()), now, g_nBarCursor, g_dBPM);
    if (fired) {
        for (List& list : lists_) ReportFired(&list);
    }
    text_ += sounds_;
    text_ += draws_;
    sounds_.clear();
    draws_.clear();
    return text_;
}

}  // namespace render
