// Playing charts of today: every chart that is opened from then on is compiled first, in memory.
#pragma once

#include <functional>
#include <vector>

#include "dialect/dialect.h"

namespace compile {

// What is done with the findings of a chart that was opened.
using OnFindings = std::function<void(const std::vector<dialect::Finding>&)>;

void PlayModern(const dialect::Choice& choice = {}, OnFindings on_findings = nullptr);
void PlayAsWritten();  // charts are read as they are, which is how a program begins
bool PlaysModern();

}  // namespace compile
