// How much of a chart is played as written, in one sentence.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "dialect/dialect.h"

namespace check {

struct Verdict {
    dialect::Verdict plain, modern;  // of the file as it stands, and compiled
    bool compiled = false;           // the chart is checked as --modern plays it
};

// bytes: of the chart as its author wrote it.
Verdict JudgeChart(std::string_view bytes, const dialect::Choice& choice, bool compiled);

// "43 % of 2,310 sounds are played as written; --modern plays them all"
std::string SentenceOf(const Verdict& verdict);

// 2,310
std::string WithCommas(int64_t count);

}  // namespace check
