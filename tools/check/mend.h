// Mends charts: --fix and --diff.
#pragma once

#include <sys/stat.h>

#include <functional>
#include <memory>
#include <string>

#include "check/subject.h"
#include "common/parallel.h"

namespace check {

// A chart's file as it was read.
struct ChartFile {
    std::string path;  // of this machine, in the disk's spelling
    struct stat status = {};
    SharedBytes bytes;
};

// Finds the file as the player does and reads it. Returns an error message, or an empty string.
std::string ReadChartFile(const std::string& name, ChartFile* file);

// Replaces the file at once or not at all; its mode and symbolic links to it stay. Refuses a file that is
// write-protected, has further hard links, or is no longer as it was read (then *changed is true). Returns an
// error message, or an empty string.
std::string ReplaceChartFile(const ChartFile& file, const ByteBlock& bytes, bool* changed);

struct Mended {
    std::unique_ptr<Subject> subject;  // of the mended chart; its member edited is set
    SharedBytes bytes;                 // of the mended chart
    bool ends_lines_at_cr = false;     // the edits have added lines
};

// Edits and checks in turn until no safe edit is left. make: a new subject for the chart. False, with a
// reason, where CheckChart fails.
bool CheckAndMend(const std::function<std::unique_ptr<Subject>()>& make, const SharedBytes& bytes,
                  Mended* mended, std::string* why);

// Before and after as a unified diff, for patch -p0 and git apply. Line ends and all other bytes stay.
void WriteDiff(const std::string& name, std::string_view before, const Mended& after,
               const tools::Sink& sink);

inline std::string_view TextOf(const ByteBlock& bytes) {
    return {reinterpret_cast<const char*>(bytes.Data()), bytes.Size()};
}

}  // namespace check
