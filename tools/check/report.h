// What the checker writes.
#pragma once

#include <cstdio>
#include <string>

#include "check/subject.h"

namespace check {

constexpr int kJsonVersion = 1;

// Appends to the text. strict: with notes.
void WriteText(const Subject& subject, bool strict, std::string* out);

// One member of the report's `charts`; large ones in pieces to the file, when there is one, and the last
// piece to out.
void WriteJson(const Subject& subject, std::string* out, FILE* file = nullptr);
void WriteUnreadableJson(const std::string& file, const std::string& why, std::string* out);

}  // namespace check
