#include "convert/names.h"

#include <algorithm>
#include <filesystem>

#include "convert/folder.h"
#include "platform/ascii.h"

namespace convert {
namespace {

// With its dot; empty for anything but a few letters and digits.
std::string SuffixOf(const std::string& name) {
    constexpr size_t kLongest = 6;
    const std::string suffix = name.substr(std::min(name.rfind('.'), name.size()));
    const bool plain = std::all_of(suffix.begin() + !suffix.empty(), suffix.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    });
    return plain && suffix.size() > 1 && suffix.size() <= kLongest ? suffix : "";
}

}  // namespace

// The normal form of the path within the chart's folder; empty when it leads out of it.
std::string Names::BelowChart(const std::string& path) const {
    if (path.compare(0, folder_.size(), folder_) != 0) return "";
    const std::string below = std::filesystem::path(path.substr(folder_.size())).lexically_normal().string();
    return IsSafe(below) && !AsciiEqual(below, chart_) ? below : "";
}

std::string Names::NameInText(const compile::UsedFile& file, const std::string& own) {
    const bool climbs = file.name.find("..") != std::string::npos;  // a folder, or a name that looks like one
    if (file.path.empty() || (!climbs && !BelowChart(file.path).empty())) return file.name;
    const auto [renamed, fresh] = renamed_.try_emplace({file.name, file.kind});
    if (fresh) {
        std::string stem = std::to_string(renamed_.size());
        stem.insert(0, 3 - std::min<size_t>(stem.size(), 3), '0');
        stem.insert(0, own + "named-");
        renamed->second = {stem + SuffixOf(file.name), stem + SuffixOf(file.path)};
    }
    return renamed->second.in_text;
}

std::string Names::NameInFolder(const compile::UsedFile& file) const {
    if (file.path.empty()) return "";
    const auto renamed = renamed_.find({file.name, file.kind});
    return renamed == renamed_.end() ? BelowChart(file.path) : renamed->second.in_folder;
}

}  // namespace convert
