#include "common/signals.h"

#include <csignal>
#include <initializer_list>

namespace tools {
namespace {

volatile std::sig_atomic_t g_signal = 0;

}  // namespace

void CatchSignals() {
    struct sigaction action = {};
    action.sa_handler = [](int signal) { g_signal = signal; };
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
    for (int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
}

bool Stopped() {
    return g_signal != 0;
}

}  // namespace tools
