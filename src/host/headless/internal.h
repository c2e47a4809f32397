// Shared by the files of the headless host.
#pragma once

#include "host/headless/headless.h"

namespace headless {

enum class ModalKind { kBox, kFile, kMenu };

struct Modal {
    explicit Modal(ModalKind of) : kind(of) {}
    ModalKind kind;
    bool answered = false;
    std::string path;
    int id = 0;
};

// The innermost open dialog of that kind without an answer yet; null when there is none.
Modal* FindModal(ModalKind kind);
bool InModal();

// Passes an input event to the innermost dialog, which may take it as its answer.
void InputToModal(const host::Event& event);

void AddFault(const std::string& what);

// Performs the script's next action; the clock jumps to its time if that lies ahead. False when there is none
// before the end of the run.
bool TakeNextAction();

// The hook of host::OnPump, when there is one.
void Pump(const std::string* title);

void MoveTo(int x, int y);
void ResizeTo(int width, int height);

}  // namespace headless
