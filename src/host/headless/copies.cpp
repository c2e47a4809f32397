#include <algorithm>

#include "host/headless/internal.h"

namespace headless {
namespace {

struct State {
    std::vector<host::Copy> copies;
    std::vector<PostedMessage> posted;
    std::string announced;
    bool fail = false;
};
State g_state;

[[maybe_unused]] const bool kHooked = (OnReset([] { g_state = State(); }), true);

}  // namespace

void AddCopy(uint64_t id, const std::string& class_name) {
    g_state.copies.push_back({id, class_name});
}

void RemoveCopy(uint64_t id) {
    std::erase_if(g_state.copies, [id](const host::Copy& copy) { return copy.id == id; });
}

const std::vector<PostedMessage>& PostedToCopies() {
    return g_state.posted;
}
const std::string& AnnouncedClass() {
    return g_state.announced;
}
void FailListCopies(bool fail) {
    g_state.fail = fail;
}

}  // namespace headless

namespace host {

using headless::g_state;

bool AnnounceCopy(const std::string& class_name) {
    g_state.announced = class_name;
    return true;
}

void WithdrawCopy() {
    g_state.announced.clear();
}

bool ListCopies(std::vector<Copy>* copies) {
    copies->clear();
    if (g_state.fail) return false;
    *copies = g_state.copies;
    return true;
}

bool PostToCopy(uint64_t id, uint32_t message, int64_t wparam, int64_t lparam) {
    const auto is = [id](const Copy& copy) { return copy.id == id; };
    if (std::none_of(g_state.copies.begin(), g_state.copies.end(), is)) return false;
    g_state.posted.push_back({headless::Now(), id, message, wparam, lparam});
    return true;
}

void Shutdown() {
    CloseSound();
    CloseWindow();
    WithdrawCopy();
}

}  // namespace host
