#include <utility>

#include "host/headless/internal.h"

namespace headless {
namespace {

constexpr int kEnter = 13, kEscape = 27, kSpace = 32;

struct State {
    std::vector<Modal*> open;  // innermost last; each lives in the frame of its call
    std::vector<Box> boxes;
    std::vector<FileDialog> dialogs;
    std::vector<Menu> menus;
};
State g_state;

[[maybe_unused]] const bool kHooked = (OnReset([] { g_state = State(); }), true);

// Runs until the dialog is answered, the pump ends it, or the script has run out.
void Run(Modal* modal, host::Pump pump, const std::string& what) {
    g_state.open.push_back(modal);
    bool wanted = !pump || pump();
    while (wanted && !modal->answered) {
        if (!TakeNextAction()) {
            AddFault("unanswered " + what);
            break;
        }
        wanted = !pump || pump();
    }
    g_state.open.pop_back();
}

}  // namespace

const std::vector<Box>& Boxes() {
    return g_state.boxes;
}
const std::vector<FileDialog>& FileDialogs() {
    return g_state.dialogs;
}
const std::vector<Menu>& Menus() {
    return g_state.menus;
}

Modal* FindModal(ModalKind kind) {
    for (size_t i = g_state.open.size(); i-- > 0;) {
        if (g_state.open[i]->kind == kind && !g_state.open[i]->answered) return g_state.open[i];
    }
    return nullptr;
}

bool InModal() {
    return !g_state.open.empty();
}

void InputToModal(const host::Event& event) {
    Modal* modal = g_state.open.back();
    const bool key = event.kind == host::EventKind::kKeyDown;
    switch (modal->kind) {
        case ModalKind::kBox:
            if (key && (event.key == kEnter || event.key == kEscape || event.key == kSpace))
                modal->answered = true;
            break;
        case ModalKind::kFile:
            if (key && event.key == kEscape) modal->answered = true;
            break;
        case ModalKind::kMenu:
            if (!key || event.key == kEscape) modal->answered = true;
            break;
    }
}

}  // namespace headless

namespace host {

using headless::g_state;
using headless::ModalKind;

Modal InnermostModal() {
    constexpr Modal kKinds[] = {Modal::kBox, Modal::kFileDialog, Modal::kMenu};
    return g_state.open.empty() ? Modal::kNone : kKinds[static_cast<int>(g_state.open.back()->kind)];
}

void CancelFileDialog() {
    if (InnermostModal() == Modal::kFileDialog) g_state.open.back()->answered = true;
}

void ShowBox(const std::string& text, const std::string& caption, BoxIcon icon, Pump pump) {
    const size_t index = g_state.boxes.size();
    g_state.boxes.push_back({headless::Now(), text, caption, icon, false});
    headless::Modal modal(ModalKind::kBox);
    headless::Run(&modal, pump, "box \"" + caption + "\": " + text);
    g_state.boxes[index].answered = modal.answered;
}

std::string ChooseFile(const FileRequest& request, Pump pump) {
    const size_t index = g_state.dialogs.size();
    g_state.dialogs.push_back({headless::Now(), request.title, request.folder, request.filter, false, "",
                               request.name, request.extension});
    headless::Modal modal(ModalKind::kFile);
    headless::Run(&modal, pump, "file dialog");
    g_state.dialogs[index].answered = modal.answered;
    g_state.dialogs[index].answer = modal.path;
    return modal.answered ? modal.path : std::string();
}

int PopupMenu(const std::vector<MenuItem>& items, int x, int y, Pump pump) {
    const size_t index = g_state.menus.size();
    g_state.menus.push_back({headless::Now(), items, x, y, false, 0});
    headless::Modal modal(ModalKind::kMenu);
    headless::Run(&modal, pump, "menu");
    g_state.menus[index].answered = modal.answered;
    g_state.menus[index].answer = modal.answered ? modal.id : 0;
    return g_state.menus[index].answer;
}

}  // namespace host
