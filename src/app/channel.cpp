#include "app/channel.h"

#include "compile/modern.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "app/load.h"
#include "app/watch.h"
#include "chart/bms.h"
#include "host/host.h"
#include "platform/files/folder.h"
#include "platform/window/dialog.h"
#include "shell/options.h"
#include "shell/shell.h"

namespace app {
namespace {

using nlohmann::json;

constexpr int kMostNested = 64;
constexpr size_t kMostObservers = 64;  // also those that are gone
constexpr char kHostText[] = "this instance was started with -D or beside one";
constexpr size_t kMaxRequests = 1000;  // that wait for the main thread

struct Request {
    uint64_t client;
    json id, body;
};

// What an `ask` wants for the chart that the user chooses.
struct Wanted {
    int measure = -1;
    std::optional<int> hundredths;
    bool modern = false, watch = false;
    bool asked = false;  // the dialog has opened
};

struct Channel {
    std::mutex lock;  // guards status, requests and observers
    Status status;
    std::deque<Request> requests;
    std::vector<uint64_t> observers;
    // The main thread's own.
    Status latest;
    bool loading = true, busy = false;
    bool starting = false;  // loaded, and its clock does not run yet
    std::optional<Wanted> wanted;
    void (*announced)() = nullptr;
    void (*loaded)() = nullptr;
};
Channel& g_channel = *new Channel;  // the host's thread may outlive main

// What came from outside may hold any bytes.
std::string Dump(const json& value) {
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

void Answer(uint64_t client, const json& id, const json& result) {
    host::SendLine(client, Dump({{"id", id}, {"ok", true}, {"result", result}}));
}

void Refuse(uint64_t client, const json& id, const char* code, const std::string& text) {
    host::SendLine(client, Dump({{"id", id}, {"ok", false}, {"error", {{"code", code}, {"text", text}}}}));
}

// Both need the lock.
void TellObservers() {
    const std::string line = Dump({{"event", "status"}, {"status", ToJson(g_channel.status)}});
    std::erase_if(g_channel.observers, [&](uint64_t client) { return !host::SendLine(client, line); });
}
void Observe(uint64_t client) {
    auto& observers = g_channel.observers;
    if (std::find(observers.begin(), observers.end(), client) != observers.end()) return;
    if (observers.size() >= kMostObservers) TellObservers();
    observers.push_back(client);
}

// ---- the host's thread: what can be answered at once is ----

void OnLine(uint64_t client, const std::string& line) {
    // Copying and printing recurse, and the thread's stack may be small.
    const json body = json::parse(
        line, [](int depth, json::parse_event_t, const json&) { return depth <= kMostNested; }, false);
    if (!body.is_object()) return Refuse(client, nullptr, "not-json", "the line is not a JSON object");
    const json id = body.value("id", json());
    const json command = body.value("command", json());
    const std::lock_guard<std::mutex> hold(g_channel.lock);
    if (command == "status") return Answer(client, id, ToJson(g_channel.status));
    if (command == "observe") {
        Observe(client);
        return Answer(client, id, ToJson(g_channel.status));
    }
    static const char* const kCommands[] = {"open",    "ask",  "play",  "stop",
                                            "restart", "seek", "speed", "quit"};
    if (std::find(std::begin(kCommands), std::end(kCommands), command) == std::end(kCommands))
        return Refuse(client, id, "unknown-command", "there is no such command");
    if (g_channel.status.host) return Refuse(client, id, "host", kHostText);
    if (g_channel.requests.size() >= kMaxRequests)
        return Refuse(client, id, "busy", "too many commands wait");
    g_channel.requests.push_back({client, id, body});
}

// ---- the main thread ----

void Post(const Request& request, UINT message, WPARAM wparam = 0) {
    SendMessageA(g_hWnd, message, wparam, 0);
    Answer(request.client, request.id, json::object());
}

void Play(const Request& request) {
    UpdatePlaying(&g_channel.latest);
    const State state = g_channel.latest.state;
    const bool anew = state == State::kIdle || state == State::kEnded;
    Post(request, anew ? WM_REMOTE_RESTART : WM_REMOTE_PLAY);
}

// A number of the request that is whole and fits; null otherwise.
const json* Whole(const json& body, const char* name) {
    const auto at = body.find(name);
    if (at == body.end() || !at->is_number_integer()) return nullptr;
    const int64_t value =
        at->is_number_unsigned() && at->get<uint64_t>() > INT32_MAX ? INT64_MAX : at->get<int64_t>();
    return value >= INT32_MIN && value <= INT32_MAX ? &*at : nullptr;
}

void Seek(const Request& request) {
    const CBMS& chart = *g_pBMS;
    int measure = 0;
    if (const json* number = Whole(request.body, "measure")) {
        measure = number->get<int>();
    } else if (const json* line = Whole(request.body, "line")) {
        measure = g_channel.latest.lines.MeasureAt(line->get<int>());
    } else if (const json* time = Whole(request.body, "time_ms")) {
        measure = -1;
        while (measure + 1 < chart.m_nMeasure && chart.m_pMeasure[measure + 1].dStart <= time->get<int>())
            ++measure;
    } else {
        return Refuse(request.client, request.id, "wrong-value",
                      "seek takes measure, time_ms or line, a whole number");
    }
    if (measure >= chart.m_nMeasure)
        return Refuse(request.client, request.id, "no-such-measure",
                      "the last measure is " + std::to_string(chart.m_nMeasure - 1));
    SendMessageA(g_hWnd, WM_REMOTE_SEEK, static_cast<WPARAM>(static_cast<int64_t>(measure)), 0);
    Answer(request.client, request.id, {{"measure", ClampMeasure(measure)}});
}

// The speed of a request in hundredths; false when it is out of range.
bool TakeSpeed(const json& body, std::optional<int>* hundredths) {
    const auto at = body.find("speed");
    if (at == body.end()) return true;
    const double speed = at->is_number() ? at->get<double>() : 0;
    if (!(speed >= 0.1 && speed <= 8)) return false;
    *hundredths = static_cast<int>(std::lround(speed * 100));
    return true;
}

void Speed(const Request& request) {
    std::optional<int> hundredths;
    if (!TakeSpeed(request.body, &hundredths) || !hundredths)
        return Refuse(request.client, request.id, "wrong-value", "speed takes a number from 0.1 to 8");
    Post(request, WM_REMOTE_SPEED, static_cast<WPARAM>(*hundredths));
}

// The list is left before the answer, so that a start that follows the answer does not meet this instance.
void Quit(const Request& request) {
    host::LeaveList();
    Post(request, WM_REMOTE_QUIT);
}

std::string PathOf(const json& body) {
    const auto file = body.find("file"), uri = body.find("uri");
    if (uri != body.end() && uri->is_string()) return PathFromUri(uri->get<std::string>());
    return file != body.end() && file->is_string() ? file->get<std::string>() : "";
}

// Who asks for the status after the answer to `open` must not see the chart before.
void SayLoading() {
    const std::lock_guard<std::mutex> hold(g_channel.lock);
    g_channel.status.state = State::kLoading;
}

void Open(const Request& request) {
    g_channel.wanted.reset();
    LoadRequest load;
    load.path = PathOf(request.body);
    if (load.path.empty() || load.path[0] != '/' || load.path.find('\0') != std::string::npos)
        return Refuse(request.client, request.id, "wrong-value", "open takes file, an absolute path, or uri");
    if (const json* measure = Whole(request.body, "measure")) load.measure = measure->get<int>();
    if (const json* line = Whole(request.body, "line")) load.line = line->get<int>();
    if (!TakeSpeed(request.body, &load.hundredths))
        return Refuse(request.client, request.id, "wrong-value", "speed takes a number from 0.1 to 8");
    const json modern = request.body.value("modern", json(false));
    const json watch = request.body.value("watch", json(false));
    if (!modern.is_boolean() || !watch.is_boolean())
        return Refuse(request.client, request.id, "wrong-value", "modern and watch are true or false");
    const bool was_modern = compile::PlaysModern(), was_watched = WatchWanted();
    SetModern(modern);
    SetWatch(watch);
    NoteUse();
    const HeldChart held(load.path);
    const Probe probe = ProbeChart(load.path);
    if (!probe.refusal.empty()) {
        SetModern(was_modern);
        SetWatch(was_watched);
        DropUse();
        return Refuse(request.client, request.id, "refused", probe.refusal);
    }
    bool clamped;
    const int measure = StartMeasure(load, probe, &clamped);
    SayLoading();
    Answer(request.client, request.id, {{"measure", measure}, {"clamped", clamped}});
    Reload(load, measure);
}

// The dialog opens when the request has been answered: it may stay open for long.
void AskUser(const Request& request) {
    const std::string folder = PathOf(request.body);
    if (!folder.empty() && (folder[0] != '/' || !IsFolder(folder)))
        return Refuse(request.client, request.id, "wrong-value", "ask takes the absolute path of a folder");
    const json* measure = Whole(request.body, "measure");
    std::optional<int> hundredths;
    if (!TakeSpeed(request.body, &hundredths))
        return Refuse(request.client, request.id, "wrong-value", "speed takes a number from 0.1 to 8");
    const json modern = request.body.value("modern", json(false));
    const json watch = request.body.value("watch", json(false));
    if (!modern.is_boolean() || !watch.is_boolean())
        return Refuse(request.client, request.id, "wrong-value", "modern and watch are true or false");
    g_channel.wanted = {ClampMeasure(measure ? measure->get<int>() : -1), hundredths, modern, watch};
    AnswerNextOpenDialog(folder.c_str());
    host::Unminimize();
    PostMessageA(g_hWnd, WM_REMOTE_LOAD, 0, 0);
    Answer(request.client, request.id, json::object());
}

void Execute(const Request& request) {
    const json& command = request.body["command"];
    if (g_bHost) return Refuse(request.client, request.id, "host", kHostText);
    if (command == "quit") return Quit(request);
    if (!HasChart()) return Refuse(request.client, request.id, "no-chart", "no chart is loaded");
    if (command == "open") return Open(request);
    if (command == "ask") return AskUser(request);
    if (command == "play") return Play(request);
    if (command == "stop") return Post(request, WM_REMOTE_STOP);
    if (command == "restart") return Post(request, WM_REMOTE_RESTART);
    if (command == "seek") return Seek(request);
    Speed(request);
}

// A load begins: the user has chosen.
void ApplyWanted() {
    if (!g_channel.wanted) return;
    const Wanted wanted = *std::exchange(g_channel.wanted, std::nullopt);
    SetModern(wanted.modern);
    SetWatch(wanted.watch);
    g_nStartMeasure = wanted.measure;
    if (wanted.hundredths) SetSpeed(SpeedFromMessage(*wanted.hundredths));
}

// The dialog has closed, and nothing was chosen.
void DropWanted() {
    if (!g_channel.wanted) return;
    if (host::InnermostModal() != host::Modal::kNone) {
        g_channel.wanted->asked = true;
    } else if (g_channel.wanted->asked) {
        g_channel.wanted.reset();
    }
}

// Whether a request has to wait: a load for the end of a box or menu. A file dialog makes way.
bool MustWait(const Request& request) {
    if (request.body["command"] != "open" && request.body["command"] != "ask") return false;
    if (!HasChart()) return false;  // the box ends the instance
    host::CancelFileDialog();
    return host::InnermostModal() != host::Modal::kNone;
}

bool TakeRequest(Request* request) {
    const std::lock_guard<std::mutex> hold(g_channel.lock);
    auto& requests = g_channel.requests;
    const auto next = std::find_if_not(requests.begin(), requests.end(), MustWait);
    if (next == requests.end()) return false;
    *request = std::move(*next);
    requests.erase(next);
    return true;
}

// Observers hear of a change of state, measure or line.
void Publish() {
    Status& latest = g_channel.latest;
    UpdatePlaying(&latest);
    if (g_channel.loading || g_channel.starting) latest.state = State::kLoading;
    latest.modal = host::InnermostModal() != host::Modal::kNone;
    latest.watch = Watches();
    latest.refused = WatchRefusal();
    const std::lock_guard<std::mutex> hold(g_channel.lock);
    Status& shown = g_channel.status;
    const bool changed = shown.state != latest.state || shown.measure != latest.measure ||
                         shown.path != latest.path || shown.refused != latest.refused;
    // The texts change with a load alone: copying them each frame would cost more than all the rest.
    shown.state = latest.state, shown.host = latest.host, shown.measure = latest.measure,
    shown.place = latest.place;
    shown.time_ms = latest.time_ms, shown.tempo = latest.tempo, shown.speed = latest.speed;
    shown.sounding = latest.sounding, shown.modal = latest.modal, shown.watch = latest.watch;
    if (changed) shown.refused = latest.refused;
    if (!changed || g_channel.observers.empty()) return;
    TellObservers();
}

void OnTitle(const std::string& title) {
    g_channel.loading = title == LOADING_TITLE;
    if (g_channel.loading) {
        ApplyWanted();
        NoteUse();
        g_channel.latest.path = OpenedFile();
        g_channel.latest.title.clear();
        g_channel.latest.lines = ChartLines();
    } else {
        g_channel.starting = true;
        KeepUse();
        UpdateChart(&g_channel.latest);
    }
    const std::lock_guard<std::mutex> hold(g_channel.lock);
    g_channel.status = g_channel.latest;
}

void CallOnce(void (**function)()) {
    if (*function) (*function)();
    *function = nullptr;
}

// A request that loads pumps messages when the load fails: nothing else is taken meanwhile.
void OnPump(const std::string* title) {
    if (g_bHost) host::SetDeaf();
    if (title) {
        OnTitle(*title);
    } else {
        g_channel.starting = false;
    }
    DropWanted();
    Publish();
    CallOnce(&g_channel.announced);
    if (title && !g_channel.loading) CallOnce(&g_channel.loaded);
    if (title || g_channel.busy) return;
    g_channel.busy = true;
    Request request;
    while (TakeRequest(&request)) Execute(request);
    PollWatch();
    g_channel.busy = false;
}

}  // namespace

void ServeChannel(void (*announced)(), void (*loaded)()) {
    g_channel.announced = announced;
    g_channel.loaded = loaded;
    host::ServeLines(OnLine);
    host::OnPump(OnPump);
}

void ResetChannel() {
    const std::lock_guard<std::mutex> hold(g_channel.lock);
    g_channel.status = g_channel.latest = Status();
    g_channel.requests.clear();
    g_channel.observers.clear();
    g_channel.loading = true;
    g_channel.busy = g_channel.starting = false;
    g_channel.wanted.reset();
    g_channel.announced = g_channel.loaded = nullptr;
    ResetWatch();
}

}  // namespace app
