#include "host/desktop/portal.h"

#include <dlfcn.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace host::desktop {
namespace {

constexpr int kPatience = 5000;  // ms for an answer

struct State {
    std::mutex lock;  // guards what follows
    std::condition_variable answered;
    bool asking = false;
    ColorScheme scheme = ColorScheme::kUnknown;
};
State& g_portal = *new State;  // the thread may outlive main

// What is needed of libdbus-1, whose interface is fixed. It is loaded when a dialog opens: no start waits for
// it.
struct Bus {
    struct Iterator {
        alignas(8) char space[256];  // the library's has 72 bytes
    };
    void* (*get_private)(int, void*);
    void (*exit_on_disconnect)(void*, uint32_t);
    void* (*new_call)(const char*, const char*, const char*, const char*);
    uint32_t (*append)(void*, int, ...);
    void* (*send)(void*, void*, int, void*);
    uint32_t (*iterate)(void*, Iterator*);
    int (*type)(Iterator*);
    void (*recurse)(Iterator*, Iterator*);
    void (*get)(Iterator*, void*);
    void (*free_message)(void*);
    void (*close)(void*);
    void (*free_connection)(void*);
};

template <class Function>
bool Find(void* library, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(dlsym(library, name));
    return *function != nullptr;
}

bool Load(Bus* bus) {
    void* const library = dlopen("libdbus-1.so.3", RTLD_NOW | RTLD_LOCAL);
    return library && Find(library, "dbus_bus_get_private", &bus->get_private) &&
           Find(library, "dbus_connection_set_exit_on_disconnect", &bus->exit_on_disconnect) &&
           Find(library, "dbus_message_new_method_call", &bus->new_call) &&
           Find(library, "dbus_message_append_args", &bus->append) &&
           Find(library, "dbus_connection_send_with_reply_and_block", &bus->send) &&
           Find(library, "dbus_message_iter_init", &bus->iterate) &&
           Find(library, "dbus_message_iter_get_arg_type", &bus->type) &&
           Find(library, "dbus_message_iter_recurse", &bus->recurse) &&
           Find(library, "dbus_message_iter_get_basic", &bus->get) &&
           Find(library, "dbus_message_unref", &bus->free_message) &&
           Find(library, "dbus_connection_close", &bus->close) &&
           Find(library, "dbus_connection_unref", &bus->free_connection);
}

// The number in the answer, which is a variant in a variant.
uint32_t NumberOf(const Bus& bus, void* answer) {
    Bus::Iterator at;
    uint32_t number = 0;
    if (!bus.iterate(answer, &at)) return 0;
    for (int depth = 0; depth < 4 && bus.type(&at) == 'v'; ++depth) {
        Bus::Iterator inner;
        bus.recurse(&at, &inner);
        at = inner;
    }
    if (bus.type(&at) == 'u') bus.get(&at, &number);
    return number;
}

uint32_t ReadSetting(const Bus& bus, void* connection) {
    void* call = bus.new_call("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                              "org.freedesktop.portal.Settings", "Read");
    if (!call) return 0;
    const char *space = "org.freedesktop.appearance", *key = "color-scheme";
    void* answer = nullptr;
    if (bus.append(call, 's', &space, 's', &key, 0)) answer = bus.send(connection, call, kPatience, nullptr);
    bus.free_message(call);
    if (!answer) return 0;
    const uint32_t number = NumberOf(bus, answer);
    bus.free_message(answer);
    return number;
}

ColorScheme ReadColorScheme() {
    static Bus bus;
    static const bool loaded = Load(&bus);
    void* const connection = loaded ? bus.get_private(0, nullptr) : nullptr;
    if (!connection) return ColorScheme::kUnknown;
    bus.exit_on_disconnect(connection, 0);
    const uint32_t number = ReadSetting(bus, connection);
    bus.close(connection);
    bus.free_connection(connection);
    return number == 1 ? ColorScheme::kDark : number == 2 ? ColorScheme::kLight : ColorScheme::kUnknown;
}

void Answer() {
    const ColorScheme scheme = ReadColorScheme();
    const std::lock_guard<std::mutex> hold(g_portal.lock);
    g_portal.scheme = scheme;
    g_portal.asking = false;
    g_portal.answered.notify_all();
}

}  // namespace

void AskColorScheme() {
    // Without an address the library would start a bus of its own.
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address || !*address) return;
    {
        const std::lock_guard<std::mutex> hold(g_portal.lock);
        if (g_portal.asking) return;
        g_portal.asking = true;
    }
    try {
        std::thread(Answer).detach();
    } catch (const std::exception&) {
        const std::lock_guard<std::mutex> hold(g_portal.lock);
        g_portal.asking = false;
    }
}

ColorScheme AnsweredColorScheme() {
    const std::lock_guard<std::mutex> hold(g_portal.lock);
    return g_portal.scheme;
}

bool AwaitColorScheme(int milliseconds) {
    std::unique_lock<std::mutex> hold(g_portal.lock);
    return g_portal.answered.wait_for(hold, std::chrono::milliseconds(milliseconds),
                                      [] { return !g_portal.asking; });
}

}  // namespace host::desktop
