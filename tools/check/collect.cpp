#include "check/collect.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "chart/bms.h"
#include "platform/ascii.h"

namespace check {
namespace {

namespace fs = std::filesystem;

bool IsChartName(const std::string& name) {
    const auto ends = [&name](const char* ending) { return AsciiEndsWith(name, ending); };
    return ends(".bms") || ends(".bme") || ends(".bml") || ends(".pms");
}

void Walk(const std::string& folder, std::vector<std::string>* charts, std::vector<Failure>* failures) {
    std::error_code error;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        entries.push_back(*it);
    if (error) failures->push_back({folder, error.message()});
    std::sort(entries.begin(), entries.end());
    for (const fs::directory_entry& entry : entries) {
        const std::string name = entry.path().filename();
        if (entry.is_directory(error) && !entry.is_symlink(error)) {
            if (name[0] != '.') Walk(entry.path(), charts, failures);
        } else if (IsChartName(name) && entry.is_regular_file(error)) {
            charts->push_back(entry.path());
        }
    }
}

}  // namespace

std::string ReadStandardInput(SharedBytes* bytes) {
    constexpr size_t kStep = 64 << 10;
    const auto block = std::make_shared<ByteBlock>();
    for (size_t size = 0; size <= size_t{BMS_FILE_LIMIT};) {
        if (!block->Grow(size + kStep)) return "no memory for standard input";
        const size_t n = std::fread(block->Data() + size, 1, kStep, stdin);
        size += n;
        block->Resize(size);
        *bytes = block;
        if (n == 0) return std::ferror(stdin) ? "cannot read standard input" : "";
    }
    return "is larger than 256 MiB, the most that the player reads";
}

std::vector<std::string> CollectCharts(const std::vector<std::string>& names,
                                       std::vector<Failure>* failures) {
    std::vector<std::string> charts;
    for (const std::string& name : names) {
        std::error_code error;
        const size_t before = charts.size() + failures->size();
        if (name == "-" || !fs::is_directory(name, error))
            charts.push_back(name);
        else
            Walk(name, &charts, failures);
        if (charts.size() + failures->size() == before) failures->push_back({name, "no chart found"});
    }
    return charts;
}

}  // namespace check
