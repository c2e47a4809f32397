#include "check/edits.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "check/characters.h"
#include "platform/ascii.h"

namespace check {
namespace {

constexpr size_t kMark = Code("byte-order-mark").Index(), kBlanks = Code("trailing-blank").Index(),
                 kLoneLf = Code("lone-lf").Index(), kLoneCr = Code("lone-cr").Index();

// Whether a name at that offset is the value of a definition: places of a compiled chart may be guessed.
bool IsName(std::string_view text, size_t offset) {
    constexpr size_t kHead = 7;  // `#WAVxx `
    if (offset < kHead) return false;
    const size_t lf = text.rfind('\n', offset - 1);
    std::string_view head = text.substr(lf == text.npos ? 0 : lf + 1);
    head = head.substr(0, offset - static_cast<size_t>(head.data() - text.data()));
    while (!head.empty() && (head.back() == ' ' || head.back() == '\t')) head.remove_suffix(1);
    head.remove_prefix(std::min(head.find('#'), head.size()));
    return head.size() == 6 &&
           (AsciiEqual(head.substr(0, 4), "#WAV") || AsciiEqual(head.substr(0, 4), "#BMP"));
}

// The parts of a name that differ, so that no byte is touched that stays as it is.
void AddDifferences(const Proposal& proposal, int64_t offset, std::vector<Edit>* edits) {
    const std::string &from = proposal.from, &to = proposal.to;
    // Names of different length differ in their ending.
    const size_t last = from.find_last_of("./\\");
    const bool whole = from.size() == to.size() || last == from.npos || from[last] != '.';
    const size_t dot = whole ? from.size() : last;
    const size_t alike = std::min(dot, to.size());
    for (size_t begin = 0, end; begin < alike; begin = end + 1) {
        for (end = begin; end < alike && from[end] != to[end];) ++end;
        if (end == begin) continue;
        edits->push_back({offset + static_cast<int64_t>(begin), static_cast<int64_t>(end - begin),
                          to.substr(begin, end - begin), proposal.code});
    }
    if (alike == from.size() && alike == to.size()) return;
    edits->push_back({offset + static_cast<int64_t>(alike), static_cast<int64_t>(from.size() - alike),
                      to.substr(alike), proposal.code});
}

}  // namespace

Edits::Edits(std::string_view text, const Findings& findings)
    : text_(text),
      lone_lf_(findings.CountOfCode(kLoneLf) > 0),
      lone_cr_(findings.CountOfCode(kLoneCr) > 0),
      mended_(findings.CountOfCode(kLoneLf) + findings.CountOfCode(kLoneCr)) {
    int32_t number = 1;
    size_t line = 0;
    for (const Proposal& proposal : findings.Proposals()) {
        for (; number < proposal.place.line && line < text.size(); ++number)
            line = std::min(text.find('\n', line), text.size() - 1) + 1;
        if (number == proposal.place.line)
            Take(proposal, static_cast<int64_t>(line) + proposal.place.column - 1);
    }
}

void Edits::Take(const Proposal& proposal, int64_t offset) {
    const auto at = static_cast<size_t>(offset);
    const bool named = proposal.code != kMark && proposal.code != kBlanks;
    if (at > text_.size() || text_.substr(at, proposal.from.size()) != proposal.from) return;
    if (named && !IsName(text_, at)) return;
    // No two edits have one offset, so that their order never matters; the next pass has the second one.
    const size_t end = at + proposal.from.size();
    if (lone_cr_ && at > 0 && text_[at - 1] == '\r') return;
    if (lone_lf_ && proposal.to.size() > proposal.from.size() && text_.substr(end, 1) == "\n") return;
    if (!listed_.empty() && listed_.back().offset + std::max<int64_t>(listed_.back().length, 1) > offset)
        return;
    AddDifferences(proposal, offset, &listed_);
    ++mended_;
}

template <class Function>
void Edits::ForLineEnds(const Function& take) const {
    const char *begin = text_.data(), *end = begin + text_.size();
    for (const char* p = begin; p < end; ++p) {
        if (*p == '\n' && lone_lf_ && (p == begin || p[-1] != '\r')) {
            take({p - begin, 0, "\r", kLoneLf});
        } else if (*p == '\r' && lone_cr_) {
            const char* after = std::find_if(p, end, [](char c) { return c != '\r'; });
            if (after < end && *after == '\n') {
                if (after - p > 1) take({p - begin, after - p - 1, "", kLoneCr});
            } else {
                for (const char* cr = p; cr < after; ++cr) take({cr + 1 - begin, 0, "\n", kLoneCr});
            }
            p = after - 1;
        }
    }
}

void Edits::ForEach(const std::function<void(const Edit&)>& take) const {
    auto listed = listed_.begin();
    const auto take_listed = [&](int64_t before) {
        for (; listed != listed_.end() && listed->offset + listed->length <= before; ++listed) take(*listed);
    };
    if (lone_lf_ || lone_cr_) ForLineEnds([&](const Edit& edit) { take_listed(edit.offset), take(edit); });
    take_listed(INT64_MAX);
}

SharedBytes Edits::Apply() const {
    int64_t size = static_cast<int64_t>(text_.size());
    ForEach([&](const Edit& edit) { size += static_cast<int64_t>(edit.text.size()) - edit.length; });
    const auto block = std::make_shared<ByteBlock>();
    if (!block->Resize(static_cast<size_t>(size) + 1)) return nullptr;
    BYTE* to = block->Data();
    int64_t done = 0;
    const auto copy = [&to](const char* from, size_t count) { to = std::copy_n(from, count, to); };
    ForEach([&](const Edit& edit) {
        copy(text_.data() + done, static_cast<size_t>(edit.offset - done));
        copy(edit.text.data(), edit.text.size());
        done = edit.offset + edit.length;
    });
    copy(text_.data() + done, text_.size() - static_cast<size_t>(done));
    *to = 0;
    block->Resize(static_cast<size_t>(size));
    return block;
}

ListedEdits ListEdits(const Edits& edits, const Findings& findings) {
    constexpr size_t kMost = 100'000;
    ListedEdits listed;
    const std::vector<Finding>& kept = findings.Kept();
    std::vector<std::vector<size_t>> of_code(std::size(kCodes));
    for (size_t i = 0; i < kept.size(); ++i) of_code[*IndexOfCode(kept[i].code)].push_back(i);
    listed.of_finding.resize(kept.size());
    size_t count = 0;
    CharacterCounter counter(edits.Text());
    edits.ForEach([&](const Edit& edit) {
        const std::vector<size_t>& own = of_code[edit.code];
        if (++count > kMost || own.empty()) return;
        const auto later = std::upper_bound(own.begin(), own.end(), edit.offset,
                                            [&](int64_t at, size_t i) { return at < kept[i].offset; });
        counter.MoveTo(edit.offset);
        ListedEdit placed = {edit, counter.Line(), counter.Character(), 0, 0};
        counter.MoveTo(edit.offset + edit.length);
        placed.end_line = counter.Line();
        placed.end_column = counter.Character();
        listed.of_finding[later == own.begin() ? own[0] : later[-1]].push_back(std::move(placed));
    });
    listed.whole = count <= kMost;
    if (!listed.whole) listed.of_finding.assign(kept.size(), {});
    return listed;
}

}  // namespace check
