// What a code means, at length.
#pragma once

#include <string>

#include "check/codes.h"

namespace check {

struct Explanation {
    std::string_view code;
    std::string_view why;      // why the player does it, or what the listener notices
    std::string_view example;  // lines of a chart; may be empty
    std::string_view fix;
    std::string_view edit = {};  // what --fix does, or why it does nothing; empty: only the author can know
};

// Markdown: a heading, the meaning, the reason, an example, how to fix it and what --fix does.
std::string Explain(size_t index);

// All of them, as docs/findings.md has them.
std::string ExplainAll();

}  // namespace check
