// Playing charts of today: every chart that is opened from then on is compiled first, in memory.
#pragma once

#include "dialect/dialect.h"

namespace compile {

void PlayModern(const dialect::Choice& choice = {});
void PlayAsWritten();  // charts are read as they are, which is how a program begins
bool PlaysModern();    // from any thread

}  // namespace compile
