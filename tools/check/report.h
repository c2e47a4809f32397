// The reports of the checker. Everything is appended to out.
#pragma once

#include <string>
#include <vector>

#include "check/subject.h"
#include "common/parallel.h"

namespace check {

constexpr int kJsonVersion = 1;

// A chart that could not be checked or fixed, or a folder without charts.
struct Failure {
    std::string file;  // empty in SARIF: the whole run
    std::string why;   // as ShownName makes it
};

struct TextStyle {
    bool notes = false;  // listed, and not only counted
    bool all = false;    // every finding; otherwise one of each code, the most severe
    bool color = false;
};
void WriteText(const Subject& subject, const TextStyle& style, std::string* out);

// One member of the report's `charts`. With a sink, most of a large report goes there in pieces and out holds
// the rest.
void WriteJson(const Subject& subject, std::string* out, const tools::Sink* sink = nullptr);
void WriteUnreadableJson(const Failure& failure, std::string* out);

// A SARIF log is the head, the results of all charts with commas between them, and the end. What WriteSarif
// appends has commas between its results and is empty if there are none.
void WriteSarifHead(const char* version, std::string* out);
void WriteSarif(const Subject& subject, std::string* out);
void WriteSarifEnd(const std::vector<Failure>& failures, std::string* out);

void WriteGithub(const Subject& subject, bool notes, std::string* out);
void WriteGithubFailure(const Failure& failure, std::string* out);

}  // namespace check
