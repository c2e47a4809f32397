// The reports of the checker.
#pragma once

#include <cstdio>
#include <string>

#include "check/subject.h"

namespace check {

constexpr int kJsonVersion = 1;

// Appends to out. strict: with notes.
void WriteText(const Subject& subject, bool strict, std::string* out);

// One member of the report's `charts`. With a file, most of a large report goes there in pieces; the rest is
// appended to out.
void WriteJson(const Subject& subject, std::string* out, FILE* file = nullptr);
void WriteUnreadableJson(const std::string& file, const std::string& why, std::string* out);

}  // namespace check
