#include "app/client.h"

#include <cstdio>
#include <list>
#include <nlohmann/json.hpp>
#include <vector>

#include "app/status.h"
#include "host/host.h"
#include "host/terminal.h"
#include "shell/shell.h"

namespace app {
namespace {

using nlohmann::json;

constexpr int kStatusId = 2;
constexpr uint64_t kPatience = 200'000'000, kLongest = 10'000'000'000, kPause = 10'000'000;  // ns

std::vector<uint64_t> Running() {
    std::vector<host::Instance> instances;
    host::ListInstances(&instances);
    std::vector<uint64_t> ids;
    for (const host::Instance& instance : instances) {
        if (instance.class_name == WINDOW_CLASS) ids.push_back(instance.id);
    }
    return ids;
}

// The one instance that can be told. Otherwise the exit code, after a line.
int FindOne(uint64_t* id) {
    const std::vector<uint64_t> ids = Running();
    if (ids.size() == 1) *id = ids[0];
    if (ids.size() > 1)
        Say(std::to_string(ids.size()) + " instances are running; none of them takes commands");
    return ids.empty() ? kNoneRuns : ids.size() > 1 ? kCannotTake : kDone;
}

// The answer to the request of that id, or of the other one; null when neither comes by then.
json ReadAnswer(host::LineClient* client, uint64_t until, int id, int other = 0) {
    std::string line;
    for (uint64_t now; (now = host::Nanoseconds()) < until;) {
        if (!client->Read(&line, static_cast<int>((until - now) / 1'000'000) + 1)) return nullptr;
        json answer = json::parse(line, nullptr, false);
        const json of = answer.is_object() ? answer.value("id", json()) : json();
        if (of == id || of == other) return answer;
    }
    return nullptr;
}

int NoAnswer() {
    Say("the running instance does not answer");
    return kCannotTake;
}

// file: as the user named it.
int Result(const json& answer, const std::string& file) {
    if (answer.value("ok", false)) return kDone;
    const json error = answer.value("error", json::object());
    const bool refused = error.value("code", "") == "refused";
    Say((refused ? file + ": " : "") + error.value("text", "the running instance refuses"));
    return refused ? kRefused : kCannotTake;
}

bool AskStatus(host::LineClient* client) {
    return client->Write(json({{"id", kStatusId}, {"command", "status"}}).dump());
}

json ReadStatus(host::LineClient* client) {
    if (!AskStatus(client)) return nullptr;
    const json answer = ReadAnswer(client, host::Nanoseconds() + kPatience, kStatusId);
    return answer.is_object() ? answer.value("result", json()) : nullptr;
}

// Sends one command and waits for its answer as long as the instance shows life: a load may take its time.
int Tell(uint64_t id, json command, const std::string& file, json* result) {
    uint64_t alive = host::Nanoseconds();
    uint64_t end = alive + kLongest;
    host::LineClient client(id);
    command["id"] = 1;
    if (!client.Write(command.dump(-1, ' ', false, json::error_handler_t::replace))) return NoAnswer();
    for (; alive < end; alive = host::Nanoseconds()) {
        json answer = ReadAnswer(&client, alive + kPatience / 2, 1);
        if (!answer.is_object()) {
            if (!AskStatus(&client)) return NoAnswer();
            answer = ReadAnswer(&client, alive + kPatience, kStatusId, 1);
        }
        if (!answer.is_object()) return NoAnswer();
        const json status = answer.value("result", json::object());
        if (answer["id"] == 1) return *result = status, Result(answer, file);
        if (status.value("state", "") == "loading") end = alive + kLongest;
        const bool waits = command["command"] == "open" || command["command"] == "ask";
        if (!waits || !status.value("modal", false)) continue;
        Say("the chart is opened when the box or menu in the player is closed");
        return kDone;
    }
    return NoAnswer();
}

const char* VerbText(Verb verb) {
    switch (verb) {
        case Verb::kPlay:
            return "play";
        case Verb::kStop:
            return "stop";
        case Verb::kRestart:
            return "restart";
        case Verb::kSeek:
            return "seek";
        case Verb::kSpeed:
            return "speed";
        default:
            return "quit";
    }
}

void Print(const json& status) {
    std::printf("%s\n", status.dump(-1, ' ', false, json::error_handler_t::replace).c_str());
    std::fflush(stdout);
}

// One line for each instance, and with --follow one for each change until none is left.
int ShowStatus(bool follow) {
    std::list<host::LineClient> clients;
    int code = kDone;
    const std::vector<uint64_t> ids = Running();
    if (ids.empty()) {
        Say("no instance is running");
        return kNoneRuns;
    }
    const uint64_t until = host::Nanoseconds() + kPatience;
    for (const uint64_t id : ids)
        clients.emplace_back(id).Write(json({{"id", 1}, {"command", follow ? "observe" : "status"}}).dump());
    for (host::LineClient& client : clients) {
        const json answer = ReadAnswer(&client, until, 1);
        if (answer.is_object())
            Print(answer["result"]);
        else
            code = NoAnswer();
    }
    while (follow && !clients.empty()) {
        for (auto client = clients.begin(); client != clients.end();) {
            std::string line;
            const bool read = client->Read(&line, 20);
            const json event = read ? json::parse(line, nullptr, false) : json();
            if (event.is_object() && event.contains("status")) Print(event["status"]);
            client = read || client->IsOpen() ? std::next(client) : clients.erase(client);
        }
    }
    return code;
}

}  // namespace

void Say(const std::string& line) {
    std::fprintf(stderr, "lumetra: %s\n", host::TerminalText(line).c_str());
}

int RunCommand(const LongOptions& options) {
    if (options.verb == Verb::kStatus) return ShowStatus(options.follow);
    uint64_t id;
    if (const int code = FindOne(&id)) {
        if (code == kNoneRuns) Say("no instance is running");
        return code;
    }
    json command = {{"command", VerbText(options.verb)}}, result;
    if (options.measure) command["measure"] = *options.measure;
    if (options.speed) command["speed"] = *options.speed;
    return Tell(id, command, "", &result);
}

int OpenInRunning(const LongOptions& options, const Target& target) {
    uint64_t id;
    if (const int code = FindOne(&id)) return code;
    json command = {{"command", target.ask ? "ask" : "open"}}, result;
    if (!target.path.empty()) command["uri"] = PathToUri(target.path);
    if (options.measure) command["measure"] = *options.measure;
    if (options.line) command["line"] = *options.line;
    if (options.modern) command["modern"] = true;
    if (options.watch) command["watch"] = true;
    if (options.speed) command["speed"] = *options.speed;
    const int code = Tell(id, command, options.file, &result);
    if (code == kDone && result.is_object() && result.value("clamped", false))
        Say("the chart has no such measure; it plays from its last, " +
            std::to_string(result.value("measure", 0)));
    return code;
}

int WaitUntilHeard(bool asks) {
    bool chosen = !asks;
    uint64_t end = host::Nanoseconds() + kLongest;
    for (; host::Nanoseconds() < end; host::SleepMilliseconds(kPause / 1'000'000)) {
        const std::vector<uint64_t> ids = Running();
        if (ids.size() != 1) continue;
        host::LineClient client(ids[0]);
        const json status = ReadStatus(&client);
        if (!status.is_object()) continue;
        const bool asking = asks && status.value("modal", false),
                   loading = status.value("state", "") == "loading";
        if (asking || loading) end = host::Nanoseconds() + kLongest;
        chosen = chosen || asking || loading;
        if (chosen && !asking && status.value("state", "") == "running" && status.value("sounding", false))
            return kDone;
    }
    Say("no sound after 10 seconds");
    return kCannotTake;
}

}  // namespace app
