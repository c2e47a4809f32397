// What the checker reports about a chart.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "check/codes.h"

namespace check {

// A place in the chart's file: lines are counted by their LFs, columns in bytes, both from 1.
struct Place {
    int32_t line = 0;  // 0: nowhere
    int32_t column = 0;
};

struct Finding {
    Place place;
    Severity severity;
    std::string_view code;
    std::string text;
    int32_t character = 0;  // the column in characters, once they are counted
    int64_t offset = 0;     // of the place in the file, once they are counted
};

// A safe edit that mends a finding: the bytes at a place and what replaces them.
struct Proposal {
    Place place;
    size_t code;  // of the finding, by place in the list
    std::string from, to;
};

// The findings of one chart. Keeps a bounded number of each code and counts the others: a file may have the
// same fault in each of a hundred million lines.
class Findings {
public:
    static constexpr int64_t kMostOfOneCode = 1000;
    static constexpr size_t kMostProposals = size_t{1} << 20;

    // Findings of other codes are dropped.
    explicit Findings(const CodeSet& wanted = CodeSet().set()) : wanted_(wanted) {}

    // text: the sentence, or a function that makes it and is called only if the finding is kept.
    template <class Text>
    void Add(Place place, Code code, const Text& text) {
        Add(place, code, code->severity, text);
    }
    template <class Text>
    void Add(Place place, Code code, Severity severity, const Text& text) {
        if (!wanted_[code.Index()]) return;
        ++counts_[static_cast<int>(severity)];
        ++of_code_[code.Index()][static_cast<int>(severity)];
        if (CountOfCode(code.Index()) > kMostOfOneCode) return;
        if constexpr (std::is_invocable_v<Text>)
            kept_.push_back({place, severity, code->name, text(), 0, 0});
        else
            kept_.push_back({place, severity, code->name, text, 0, 0});
    }
    // Counts so many more, whose places are not known. As many as are kept must have been added.
    void AddUnkept(Code code, Severity severity, int64_t count) {
        if (!wanted_[code.Index()]) return;
        counts_[static_cast<int>(severity)] += count;
        of_code_[code.Index()][static_cast<int>(severity)] += count;
    }
    // Line ends need no proposal: edits.h knows them from the text.
    void Propose(Place place, Code code, const std::string& from, const std::string& to) {
        if (!wanted_[code.Index()] || proposals_.size() == kMostProposals) return;
        proposals_.push_back({place, code.Index(), from, to});
    }

    int64_t Count(Severity severity) const { return counts_[static_cast<int>(severity)]; }
    int64_t CountOfCode(size_t index) const {
        const int64_t* count = of_code_[index];
        return count[0] + count[1] + count[2];
    }
    int64_t CountOfCode(size_t index, Severity severity) const {
        return of_code_[index][static_cast<int>(severity)];
    }
    template <class Move>
    void MovePlaces(const Move& move) {
        for (Finding& finding : kept_) finding.place = move(finding.place);
    }
    void Sort();                              // by place
    void FindColumns(std::string_view text);  // in characters, and offsets, in the chart's text; after Sort
    const std::vector<Finding>& Kept() const { return kept_; }
    const std::vector<Proposal>& Proposals() const { return proposals_; }
    std::map<std::string_view, int64_t> LeftOut() const;  // by code, how many were only counted

private:
    int64_t counts_[3] = {};
    int64_t of_code_[std::size(kCodes)][3] = {};
    CodeSet wanted_;
    std::vector<Finding> kept_;
    std::vector<Proposal> proposals_;
};

// A name from a chart or a disk as text: UTF-8 or else CP932, with `\xE9` for control characters and for
// bytes that are neither.
std::string ShownName(std::string_view bytes);

// Bytes of a chart for a sentence: in quotes, on one line, without control characters, at most 80 characters.
std::string Quote(std::string_view bytes);

// "1 line", "5 lines"
std::string CountOf(int64_t count, const char* thing);

// "its object makes no sound", "its 5 objects make no sound". The verb is given in the plural.
std::string ItsObjects(int64_t count, const char* verb, const char* rest);

}  // namespace check
