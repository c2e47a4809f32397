#include <algorithm>

#include "host/headless/internal.h"

namespace headless {
namespace {

struct State {
    std::vector<host::Instance> instances;
    std::vector<PostedMessage> posted;
    std::string announced;
    bool fail = false;
    host::LineHandler handler = nullptr;
    host::PumpHook pump = nullptr;
    std::vector<SentLine> sent;
    bool left = false;
};
State g_state;

[[maybe_unused]] const bool kHooked = (OnReset([] { g_state = State(); }), true);

}  // namespace

void AddInstance(uint64_t id, const std::string& class_name) {
    g_state.instances.push_back({id, class_name});
}

void RemoveInstance(uint64_t id) {
    std::erase_if(g_state.instances, [id](const host::Instance& instance) { return instance.id == id; });
}

const std::vector<PostedMessage>& PostedToInstances() {
    return g_state.posted;
}
const std::string& AnnouncedClass() {
    return g_state.announced;
}
void FailListInstances(bool fail) {
    g_state.fail = fail;
}

void ReceiveLine(uint64_t client, const std::string& line) {
    if (g_state.handler) g_state.handler(client, line);
}
const std::vector<SentLine>& SentLines() {
    return g_state.sent;
}
bool HasLeftList() {
    return g_state.left;
}
void Pump(const std::string* title) {
    if (g_state.pump) g_state.pump(title);
}

}  // namespace headless

namespace host {

using headless::g_state;

bool AnnounceInstance(const std::string& class_name) {
    g_state.announced = class_name;
    return true;
}

void ServeLines(LineHandler handler) {
    g_state.handler = handler;
}

bool SendLine(uint64_t client, const std::string& line) {
    g_state.sent.push_back({client, line});
    return true;
}

void LeaveList() {
    g_state.left = true;
}

void OnPump(PumpHook hook) {
    g_state.pump = hook;
}

// Other instances are not real here.
LineClient::LineClient(uint64_t) {}
LineClient::~LineClient() = default;
bool LineClient::Write(const std::string&) {
    return false;
}
bool LineClient::Read(std::string*, int) {
    return false;
}

// One process: nobody to wait for.
void LockStart(bool) {}
void UnlockStart() {}
void LeaveStartToChild() {}

void SetDeaf() {}

bool PostWasRefused() {
    return false;
}

void WithdrawInstance() {
    g_state.announced.clear();
}

bool ListInstances(std::vector<Instance>* instances) {
    instances->clear();
    if (g_state.fail) return false;
    *instances = g_state.instances;
    return true;
}

bool PostToInstance(uint64_t id, uint32_t message, int64_t wparam, int64_t lparam) {
    const auto is = [id](const Instance& instance) { return instance.id == id; };
    if (std::none_of(g_state.instances.begin(), g_state.instances.end(), is)) return false;
    g_state.posted.push_back({headless::Now(), id, message, wparam, lparam});
    return true;
}

bool Shutdown() {
    CloseSound();
    CloseWindow();
    WithdrawInstance();
    return true;
}

}  // namespace host
