#include "render/pass.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "chart/bms.h"
#include "chart/charttime.h"
#include "common/messages.h"
#include "common/signals.h"
#include "host/headless/sound.h"
#include "host/host.h"
#include "platform/window/commandline.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace render {
namespace {

constexpr uint64_t kNever = uint64_t{1} << 53;  // ms; no chart lasts that long
constexpr int kJumpMs = 30;                     // a wanted frame no further ahead is jumped to

struct Pass {
    const Options* options;
    const Listener* listener;
    bool begun = false, over = false;
    ExitCode code = kGood;
    int32_t end = 0;  // chart time after which --to ends it
    int percent = -1;
};

// Prints the percentage done, on a terminal only.
void ShowProgress(Pass* pass, int32_t now) {
    if (!isatty(STDERR_FILENO)) return;
    const int percent = std::clamp(static_cast<int>(100.0 * now / std::max(pass->end, 1)), 0, 100);
    if (percent == pass->percent) return;
    pass->percent = percent;
    std::fprintf(stderr, "\r%3d %%", percent);
}

void End(Pass* pass, ExitCode code) {
    if (pass->over) return;
    pass->over = true;
    pass->code = code;
    headless::At(headless::Now(), headless::Close());
}

bool Sounding() {
    for (CDSBuffer* sound : g_pDSound->m_pSlot) {
        if (sound && sound->IsPlaying()) return true;
    }
    return false;
}

int32_t EndOf(const Options& options) {
    int32_t last = g_pBMS->m_nMeasure - 1;
    if (options.to >= 0) last = std::min(last, options.to + 1);
    return TruncTime(g_pBMS->m_pMeasure[last].dStart);
}

// The chart is loaded once the first frame comes. Returns false when the pass ends here.
bool Begin(Pass* pass) {
    pass->begun = true;
    pass->end = EndOf(*pass->options);
    if (pass->options->from >= g_nBarCount) {
        Complain(kUsage, "--from " + std::to_string(pass->options->from) + ": the last measure is " +
                             std::to_string(g_nBarCount - 2));
        End(pass, kUsage);
        return false;
    }
    const double seconds = (double{1} * pass->end - g_dwSeekTime) / 1000;
    if (pass->listener->begin && !pass->listener->begin(seconds)) End(pass, kOutput);
    return !pass->over;
}

void JumpToWanted(const Pass& pass, int32_t now) {
    if (!pass.listener->wanted) return;
    const int64_t wanted = pass.listener->wanted();
    if (wanted <= now) return;
    // The chart time of a frame that would read the clock now.
    const int64_t next =
        now + static_cast<int32_t>(static_cast<uint32_t>(headless::Clock() / 1000000) - g_dwNowTime);
    if (wanted > next && wanted - next <= kJumpMs)
        headless::AdvanceClock(static_cast<uint64_t>(wanted - next) * 1000000);
}

void OnFrame(Pass* pass, const headless::Frame& frame) {
    if (pass->over || (!pass->begun && !Begin(pass))) return;
    if (tools::Stopped()) return End(pass, kStopped);
    const bool ended = g_bPaused;  // the chart went past its end in this frame
    const auto now = static_cast<int32_t>(static_cast<uint32_t>(g_dwSeekTime) - g_dwStartTime + g_dwNowTime);
    const bool cut = pass->options->to >= 0 && now > pass->end;
    const double seconds = static_cast<double>(headless::Clock() - headless::kClockOrigin) / 1e9;
    if (!ended && !cut) ShowProgress(pass, now);
    if (!cut && pass->listener->frame && !pass->listener->frame(frame, ended ? INT32_MAX : now, seconds))
        return End(pass, kOutput);
    if (cut || (ended && !(pass->listener->ring_out && Sounding()))) return End(pass, kGood);
    JumpToWanted(*pass, now);
}

void OnSound(void* user, const float* samples, int frames, int) {
    Pass* pass = static_cast<Pass*>(user);
    if (pass->over || !pass->listener->sound) return;
    if (!pass->listener->sound(samples, frames)) End(pass, kOutput);
}

std::string CommandLine(const Options& options) {
    const std::string from = "-N" + std::to_string(options.from), speed = "-M" + options.speed;
    // The chart is a file even if its name begins with a dash.
    const std::string chart = options.chart[0] == '-' ? "./" + options.chart : options.chart;
    std::vector<const char*> argv = {"lumetra-render", "-P", from.c_str()};
    if (!options.speed.empty()) argv.push_back(speed.c_str());
    argv.push_back(chart.c_str());
    return BuildCommandLine(static_cast<int>(argv.size()), argv.data());
}

// Reports why the program did not play, from the box that it showed.
ExitCode TellFailure(const Options& options) {
    std::string why = "cannot be played";
    if (!headless::Boxes().empty()) {
        const std::string& caption = headless::Boxes().back().caption;
        if (caption == "FileLoadError!") why = "cannot be read";
        if (caption == "CompileError!") why = "has no object after measure 0, so there is nothing to play";
    }
    return Complain(kChart, options.chart + ": " + why);
}

}  // namespace

ExitCode Complain(ExitCode code, const std::string& text) {
    return static_cast<ExitCode>(tools::Complain(code, text));
}

int64_t ChartTime(const PicturePlace& place) {
    if (!place.in_measure) return static_cast<int64_t>(place.value);
    BmsObject object = {};
    object.nMeasure = static_cast<int32_t>(place.value);
    object.dPos = place.value - object.nMeasure;
    if (object.nMeasure >= g_pBMS->m_nMeasure) return -1;
    BmsObject* list = &object;
    g_pBMS->CompileObjects(&list, 1);
    return RoundTime(object.dTime);
}

ExitCode RunPass(const Options& options, const Listener& listener) {
    headless::Reset();
    headless::EndAt(kNever);
    headless::KeepPicture(false);
    Pass pass{&options, &listener};
    headless::OnFrame([&pass](const headless::Frame& frame) { OnFrame(&pass, frame); });
    headless::SetSoundSink(OnSound, &pass);
    std::string line = CommandLine(options);
    WinMain(GetProgramModule(), nullptr, line.data(), 1);
    host::Shutdown();
    if (pass.percent >= 0) std::fputs("\r     \r", stderr);
    return pass.begun ? pass.code : TellFailure(options);
}

}  // namespace render
