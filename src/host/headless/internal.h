// Shared by the parts of the headless host.
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

// Answers the innermost open dialog of that kind that has no answer yet; null when there is none.
Modal* FindModal(ModalKind kind);
bool InModal();

// Gives an input event to the innermost dialog, which may take it as its answer.
void InputToModal(const host::Event& event);

void AddFault(const std::string& what);

// Takes the script's next action, also one of the future, to whose time the clock then jumps. False when
// there is none before the end of the run.
bool TakeNextAction();

void MoveTo(int x, int y);
void ResizeTo(int width, int height);

}  // namespace headless
