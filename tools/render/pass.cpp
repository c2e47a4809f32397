#include "render/pass.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <optional>

#include "chart/bms.h"
#include "chart/charttime.h"
#include "common/messages.h"
#include "common/signals.h"
#include "display/ddraw.h"
#include "host/headless/sound.h"
#include "host/host.h"
#include "platform/watch.h"
#include "platform/window/commandline.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "render/outputs.h"
#include "render/pacing.h"
#include "report/losses.h"
#include "report/refusal.h"
#include "shell/shell.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace render {
namespace {

constexpr uint64_t kNever = uint64_t{1} << 53;  // ms; no chart lasts that long

struct Pass {
    Pass(const Options& of, const std::vector<Sink*>& to) : options(of), sinks(to) {}
    const Options& options;
    const std::vector<Sink*>& sinks;
    Pacer pacer;
    std::string losses;
    bool begun = false, over = false;
    ExitCode code = kGood;
    int32_t end = 0;                     // chart time after which the chart or --to ends it
    int64_t sound_left = INT64_MAX / 2;  // frames until --to cuts the sound
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

// Calls each sink until one fails.
template <class Call>
ExitCode ForSinks(const Pass& pass, Call call) {
    ExitCode code = kGood;
    for (size_t i = 0; i < pass.sinks.size() && code == kGood; ++i) code = call(pass.sinks[i]);
    return code;
}

bool CutsAtEnd(const Pass& pass) {
    return pass.options.to >= 0;
}

int32_t EndOf(const Options& options) {
    int32_t last = g_pBMS->m_nMeasure - 1;
    if (options.to >= 0) last = std::min(last, options.to + 1);
    return TruncTime(g_pBMS->m_pMeasure[last].dStart);
}

ExitCode CheckPlaces(const Pass& pass) {
    if (pass.options.from >= g_nBarCount) {
        return Complain(kUsage, "--from " + std::to_string(pass.options.from) + ": the chart has " +
                                    std::to_string(g_nBarCount) + " measures, 0 to " +
                                    std::to_string(g_nBarCount - 1));
    }
    for (const PicturePlace& place : pass.options.places) {
        const int64_t time = ChartTime(place);
        const char* why = nullptr;
        if (time < 0) why = "the chart has no such measure";
        if (time >= 0 && time < g_dwSeekTime) why = "before the start of what is played";
        if (time >= pass.end + (CutsAtEnd(pass) ? 0 : 1)) why = "after the end of what is played";
        if (why) return Complain(kUsage, "--at " + place.text + ": " + why);
    }
    return kGood;
}

bool IsSeen(const Pass& pass) {
    const auto sees = [](const Sink* sink) { return sink->SeesFrames(); };
    return std::any_of(pass.sinks.begin(), pass.sinks.end(), sees);
}

void SetPace(Pass* pass) {
    std::vector<int64_t> due = DueTimes();
    for (const PicturePlace& place : pass->options.places) due.push_back(ChartTime(place));
    const bool skip = !IsSeen(*pass);
    if (skip) due.push_back(pass->end);
    pass->pacer.Set(std::move(due), pass->options.exact, skip);
}

ExitCode CheckLength(const Pass& pass, double seconds) {
    double most = kAnyLength;
    for (const Sink* sink : pass.sinks) most = std::min(most, sink->MostSeconds());
    if (seconds <= most) return kGood;
    const auto text = [](double all) {
        char hours[40];
        const int minutes = static_cast<int>(all / 60);
        std::snprintf(hours, sizeof hours, "%d h %02d min", minutes / 60, minutes % 60);
        return std::string(hours);
    };
    return Complain(kOutput, pass.options.chart + ": lasts " + text(seconds) + ", and such an output holds " +
                                 text(most) + "; select measures with --from and --to");
}

// The chart is loaded once the first frame comes.
ExitCode Begin(Pass* pass) {
    pass->begun = true;
    pass->end = EndOf(pass->options);
    pass->losses = LossSentence(report::CountLosses(*g_pBMS, *g_pDSound, *g_pDDraw));
    ExitCode code = CheckPlaces(*pass);
    const double ms = double{1} * pass->end - g_dwSeekTime;
    if (code == kGood) code = CheckLength(*pass, ms / 1000);
    if (code == kGood) code = CheckOutputs(pass->options);
    if (code != kGood) return code;
    SetPace(pass);
    if (CutsAtEnd(*pass))
        pass->sound_left = headless::SoundFrame(headless::Clock() + static_cast<uint64_t>(ms * 1e6));
    return ForSinks(*pass, [ms](Sink* sink) { return sink->Begin(ms / 1000); });
}

bool IsOver(const Pass& pass, const Moment& moment) {
    const auto rings = [](const Sink* sink) { return sink->RingsOut(); };
    const auto done = [](const Sink* sink) { return sink->IsDone(); };
    if (std::all_of(pass.sinks.begin(), pass.sinks.end(), done)) return true;
    return moment.ended &&
           !(std::any_of(pass.sinks.begin(), pass.sinks.end(), rings) && !CutsAtEnd(pass) && IsSounding());
}

void OnFrame(Pass* pass, const headless::Frame& frame) {
    if (pass->over) return;
    if (!pass->begun) {
        const ExitCode code = Begin(pass);
        if (code != kGood) return End(pass, code);
    }
    if (tools::Stopped()) return End(pass, kStopped);
    pass->pacer.OnShown();
    const auto now = static_cast<int32_t>(static_cast<uint32_t>(g_dwSeekTime) - g_dwStartTime + g_dwNowTime);
    const double seconds = static_cast<double>(headless::Clock() - headless::kClockOrigin) / 1e9;
    const Moment moment = {frame, now, g_bPaused != 0, seconds};
    if (CutsAtEnd(*pass) && !moment.ended && now >= pass->end) return End(pass, kGood);
    if (!moment.ended) ShowProgress(pass, now);
    const ExitCode code = ForSinks(*pass, [&moment](Sink* sink) { return sink->OnFrame(moment); });
    if (code != kGood || IsOver(*pass, moment)) End(pass, code);
}

// While nobody sees the frames: nothing is drawn, and a picture that would be shown still counts as a frame.
class Undrawn {
public:
    explicit Undrawn(Pass* pass) {
        pass_ = pass;
        g_pfnCallHook = OnCall;
    }
    ~Undrawn() { g_pfnCallHook = nullptr; }
    Undrawn(const Undrawn&) = delete;
    Undrawn& operator=(const Undrawn&) = delete;

private:
    static bool OnCall(const CallFacts& call, int64_t* result) {
        const bool copies = call.eCall == PlatformCall::kBltFast;
        if (!copies && call.eCall != PlatformCall::kFill && call.eCall != PlatformCall::kStretchDIBits)
            return false;
        *result = DD_OK;
        if (copies && g_pDDraw && call.pObject == g_pDDraw->m_pFront) OnFrame(pass_, {});
        return true;
    }

    static Pass* pass_;
};

Pass* Undrawn::pass_;

void OnSound(void* user, const float* samples, int frames, int) {
    Pass* pass = static_cast<Pass*>(user);
    frames = static_cast<int>(std::min<int64_t>(frames, pass->sound_left));
    if (pass->over || !pass->begun || frames == 0) return;
    pass->sound_left -= frames;
    const ExitCode code = ForSinks(*pass, [&](Sink* sink) { return sink->OnSound(samples, frames); });
    if (code != kGood) End(pass, code);
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
ExitCode ReportFailure(const std::string& chart) {
    const std::string caption = headless::Boxes().empty() ? "" : headless::Boxes().back().caption;
    std::string why = "cannot be played";
    if (caption == "FileLoadError!") why = "cannot be read: " + report::WhyUnreadable(chart);
    if (caption == "CompileError!") why = report::WhyRefusedFile(chart);
    return Complain(kChart, chart + ": " + why);
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

ExitCode RunPass(const Options& options, const std::vector<Sink*>& sinks, bool report_losses) {
    headless::Reset();
    headless::EndAt(kNever);
    headless::KeepPicture(false);
    Pass pass(options, sinks);
    headless::OnFrame([&pass](const headless::Frame& frame) { OnFrame(&pass, frame); });
    headless::OnSleep([&pass](uint64_t now, uint64_t end) { return pass.pacer.Wake(now, end); });
    headless::SetSoundSink(OnSound, &pass);
    std::optional<Undrawn> undrawn;
    if (!IsSeen(pass)) undrawn.emplace(&pass);
    std::string line = CommandLine(options);
    WinMain(GetProgramModule(), nullptr, line.data(), 1);
    host::Shutdown();
    if (pass.percent >= 0) std::fputs("\r     \r", stderr);
    if (!pass.begun) return ReportFailure(options.chart);
    if (pass.code == kGood) pass.code = ForSinks(pass, [](Sink* sink) { return sink->Finish(); });
    if (pass.code == kGood && report_losses && !pass.losses.empty())
        Complain(kGood, options.chart + ": " + pass.losses + ", lumetra-check tells more");
    return pass.code;
}

}  // namespace render
