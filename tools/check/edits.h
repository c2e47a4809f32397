// The safe edits of a chart's file that mend its findings. docs/check.md says which ones they are.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "check/finding.h"
#include "platform/byteblock.h"

namespace check {

// Bytes of the file and what replaces them, which is ASCII.
struct Edit {
    int64_t offset, length;
    std::string text;
    size_t code;  // of the finding, by place in the list of codes
};

class Edits {
public:
    Edits() = default;
    // text: the file, which must outlive this. Proposals that do not fit it are dropped.
    Edits(std::string_view text, const Findings& findings);

    std::string_view Text() const { return text_; }
    bool Empty() const { return mended_ == 0; }
    int64_t Mended() const { return mended_; }       // findings
    bool EndsLinesAtCr() const { return lone_cr_; }  // these are the only edits that add lines
    // In order, none over another. Line ends are found anew each time: a file can have a hundred million.
    void ForEach(const std::function<void(const Edit&)>& take) const;
    SharedBytes Apply() const;  // the text with a NUL after its end; null without memory

private:
    void Take(const Proposal& proposal, int64_t offset);
    template <class Function>
    void ForLineEnds(const Function& take) const;

    std::string_view text_;
    std::vector<Edit> listed_;
    bool lone_lf_ = false, lone_cr_ = false;
    int64_t mended_ = 0;
};

// An edit with its place: lines as Place has them, columns in characters.
struct ListedEdit : Edit {
    int32_t line, column, end_line, end_column;
};

// The edits of each kept finding, by its place in the list: those of its code from its place to the next
// finding of that code.
struct ListedEdits {
    std::vector<std::vector<ListedEdit>> of_finding;
    bool whole = true;  // false: too many, and none is listed
};
ListedEdits ListEdits(const Edits& edits, const Findings& findings);

}  // namespace check
