// What the checker writes.
#pragma once

#include <string>

#include "check/subject.h"

namespace check {

constexpr int kJsonVersion = 1;

// Appends to the text. strict: with notes.
void WriteText(const Subject& subject, bool strict, std::string* out);

// One member of the report's `charts`.
void WriteJson(const Subject& subject, std::string* out);
void WriteUnreadableJson(const std::string& file, const std::string& why, std::string* out);

}  // namespace check
