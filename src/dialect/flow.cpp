// Control flow: which lines of a chart are read.
#include <algorithm>
#include <cstring>

#include "dialect/lines.h"
#include "dialect/text.h"

namespace dialect {

namespace {

enum class Control {
    kNone,
    kRandom,
    kSetRandom,
    kSwitch,
    kSetSwitch,
    kIf,
    kElseIf,
    kElse,
    kEndIf,
    kEndRandom,
    kCase,
    kSkip,
    kDefault,
    kEndSwitch,
};

struct Word {
    std::string_view word;
    Control control;
};

// The usual slips of the pen stand beside the right words. Every other word that begins with END ends an #IF.
constexpr Word kWords[] = {
    {"RANDOM", Control::kRandom},
    {"RONDAM", Control::kRandom},
    {"SETRANDOM", Control::kSetRandom},
    {"SETRONDAM", Control::kSetRandom},
    {"SWITCH", Control::kSwitch},
    {"SETSWITCH", Control::kSetSwitch},
    {"IF", Control::kIf},
    {"ELSEIF", Control::kElseIf},
    {"ELSE", Control::kElse},
    {"IFEND", Control::kEndIf},
    {"ENDRANDOM", Control::kEndRandom},
    {"ENDRONDAM", Control::kEndRandom},
    {"CASE", Control::kCase},
    {"SKIP", Control::kSkip},
    {"DEF", Control::kDefault},
    {"ENDSW", Control::kEndSwitch},
    {"ENDSWITCH", Control::kEndSwitch},
};

struct Command {
    Control control = Control::kNone;
    std::string_view rest;
};

Command ReadCommand(std::string_view text) {
    size_t end = 1;
    while (end < text.size() && Upper(text[end]) >= 'A' && Upper(text[end]) <= 'Z') ++end;
    if (end < 3 || !std::strchr("RSIECD", Upper(text[1]))) return {};
    const std::string_view word = text.substr(1, end - 1);
    for (const Word& known : kWords) {
        if (IsWord(word, known.word)) return {known.control, text.substr(end)};
    }
    if (HasHead(word, "END")) return {Control::kEndIf, {}};
    return {};
}

class Flow {
public:
    Flow(const Choice& choice, Findings* findings)
        : choice_(choice), findings_(findings), state_(choice.seed) {}

    bool Active() const { return frames_.empty() || frames_.back().active; }
    void Run(const Command& command, Place place);
    void Close() {
        for (const Frame& frame : frames_) {
            if (frame.kind == Frame::kRandom) continue;  // closes by itself
            findings_->Add(Severity::kWarning, "not-closed", frame.place,
                           "this block is not closed, it ends with the file");
        }
    }

private:
    struct Frame {
        enum Kind { kRandom, kIf, kSwitch } kind;
        bool outer;     // whether the lines around it are read
        bool active;    // whether the lines now are
        bool taken;     // a branch of the chain was, or none may be
        bool closed;    // kSwitch: behind a #SKIP
        int32_t value;  // kRandom, kSwitch; -1: none fits
        Place place;
    };

    int32_t Choose(int32_t branches);
    int32_t Value(bool fixed, int32_t number, Place place);
    void BeginRandom(bool fixed, int32_t number, Place place);
    void BeginIf(int32_t number, Place place);
    void ElseIf(bool always, int32_t number, Place place);
    void Case(bool always, int32_t number, Place place);
    void Skip();
    void Open(const Frame& frame) {
        frames_.push_back(frame);
        ++open_[frame.kind];
    }
    void Keep(size_t count) {
        for (; frames_.size() > count; frames_.pop_back()) --open_[frames_.back().kind];
    }
    Frame* Innermost(Frame::Kind kind, Frame::Kind barrier);
    void CloseTo(Frame::Kind kind, Place place);
    void Stray(Place place) {
        findings_->Add(Severity::kWarning, "stray-control", place,
                       "there is nothing open that this belongs to");
    }

    const Choice& choice_;
    Findings* findings_;
    std::vector<Frame> frames_;
    size_t open_[3] = {};  // of each kind: a search for a kind that is not open would walk the whole nest
    uint64_t state_;
    size_t next_ = 0;
};

// 1 to branches. The generator is splitmix64.
int32_t Flow::Choose(int32_t branches) {
    if (choice_.kind == Choice::kList) {
        const int32_t chosen = next_ < choice_.list.size() ? choice_.list[next_++] : 1;
        return std::clamp(chosen, 1, branches);
    }
    if (choice_.kind == Choice::kFirst) return 1;
    uint64_t z = state_ += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return 1 + static_cast<int32_t>((z ^ (z >> 31)) % static_cast<uint64_t>(branches));
}

int32_t Flow::Value(bool fixed, int32_t number, Place place) {
    if (fixed) return number;
    if (number < 1) {
        findings_->Add(Severity::kWarning, "no-branches", place,
                       "there is no branch to choose from, none is taken");
        return -1;
    }
    if (!Active()) return -1;
    const int32_t chosen = Choose(number);
    findings_->Add(Severity::kNote, "branch", place, [&] {
        return "branch " + std::to_string(chosen) + " of " + std::to_string(number) + " is taken";
    });
    return chosen;
}

// A #RANDOM beside an open one takes its place; within an #IF it nests.
void Flow::BeginRandom(bool fixed, int32_t number, Place place) {
    if (!frames_.empty() && frames_.back().kind == Frame::kRandom) Keep(frames_.size() - 1);
    const bool active = Active();
    const int32_t value = Value(fixed, number, place);
    Open({Frame::kRandom, active, active, true, false, value, place});
}

// An #IF right within an open #IF closes it, since only a #RANDOM between them nests.
void Flow::BeginIf(int32_t number, Place place) {
    if (!frames_.empty() && frames_.back().kind == Frame::kIf) {
        findings_->Add(Severity::kWarning, "not-closed", frames_.back().place,
                       "this #IF is closed by the next one");
        Keep(frames_.size() - 1);
    }
    const bool within = !frames_.empty() && frames_.back().kind == Frame::kRandom;
    const bool outer = within && Active();
    if (!within)
        findings_->Add(Severity::kWarning, "if-outside", place, "an #IF outside every #RANDOM plays nothing");
    const bool fits = outer && frames_.back().value == number;
    if (within) frames_.back().taken = fits;
    Open({Frame::kIf, outer, fits, fits || !within, false, 0, place});
}

// #ELSEIF and #ELSE of an open #IF; behind its #ENDIF they go on with the chain of the #RANDOM.
void Flow::ElseIf(bool always, int32_t number, Place place) {
    Frame* frame = Innermost(Frame::kIf, Frame::kSwitch);
    if (frame) {
        Keep(static_cast<size_t>(frame - frames_.data()) + 1);
    } else if (!frames_.empty() && frames_.back().kind == Frame::kRandom) {
        const Frame random = frames_.back();
        Open({Frame::kIf, random.active, false, random.taken, false, 0, place});
        frame = &frames_.back();
    } else {
        Stray(place);
        Open({Frame::kIf, false, false, true, false, 0, place});
        return;
    }
    const size_t index = static_cast<size_t>(frame - frames_.data());
    const bool random = index > 0 && frames_[index - 1].kind == Frame::kRandom;
    const bool fits = always || (random && frames_[index - 1].value == number);
    frame->active = frame->outer && !frame->taken && fits;
    frame->taken |= frame->active;
    if (random) frames_[index - 1].taken = frame->taken;
}

void Flow::Case(bool always, int32_t number, Place place) {
    Frame* frame = Innermost(Frame::kSwitch, Frame::kSwitch);
    if (!frame) return Stray(place);
    Keep(static_cast<size_t>(frame - frames_.data()) + 1);
    frame->taken |= always || frame->value == number;
    frame->active = frame->outer && frame->taken && !frame->closed;
}

void Flow::Skip() {
    Frame* frame = Active() ? Innermost(Frame::kSwitch, Frame::kSwitch) : nullptr;
    if (!frame) return;
    frame->closed = true;
    for (Frame* inner = frame; inner < frames_.data() + frames_.size(); ++inner) inner->active = false;
}

// The innermost open frame of the kind, not looking beyond one of the other kind; null when there is none.
Flow::Frame* Flow::Innermost(Frame::Kind kind, Frame::Kind barrier) {
    if (open_[kind] == 0) return nullptr;
    for (size_t i = frames_.size(); i-- > 0;) {
        if (frames_[i].kind == kind) return &frames_[i];
        if (frames_[i].kind == barrier) break;
    }
    return nullptr;
}

// Closes the innermost frame of the kind and whatever is open within it.
void Flow::CloseTo(Frame::Kind kind, Place place) {
    const Frame* frame = Innermost(kind, kind);
    if (!frame) return Stray(place);
    Keep(static_cast<size_t>(frame - frames_.data()));
}

void Flow::Run(const Command& command, Place place) {
    const int32_t number = ReadCount(command.rest);
    switch (command.control) {
        case Control::kRandom:
        case Control::kSetRandom:
            return BeginRandom(command.control == Control::kSetRandom, number, place);
        case Control::kSwitch:
        case Control::kSetSwitch: {
            const bool active = Active();
            const int32_t value = Value(command.control == Control::kSetSwitch, number, place);
            Open({Frame::kSwitch, active, false, false, false, value, place});
            return;
        }
        case Control::kIf:
            return BeginIf(number, place);
        case Control::kElseIf:
        case Control::kElse:
            return ElseIf(command.control == Control::kElse, number, place);
        case Control::kCase:
        case Control::kDefault:
            return Case(command.control == Control::kDefault, number, place);
        case Control::kSkip:
            return Skip();
        case Control::kEndRandom:
            return CloseTo(Frame::kRandom, place);
        case Control::kEndSwitch:
            return CloseTo(Frame::kSwitch, place);
        default:
            return CloseTo(Frame::kIf, place);
    }
}

}  // namespace

bool TakeBranches(const Choice& choice, std::vector<Line>* lines, Findings* findings) {
    Flow flow(choice, findings);
    bool any = false;
    size_t kept = 0;
    for (const Line& line : *lines) {
        const Command command = ReadCommand(line.text);
        if (command.control != Control::kNone) {
            flow.Run(command, line.place);
            any = true;
        } else if (flow.Active()) {
            (*lines)[kept++] = line;
        }
    }
    flow.Close();
    lines->resize(kept);
    return any;
}

}  // namespace dialect
