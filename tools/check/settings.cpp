#include "check/settings.h"

#include <toml++/toml.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "platform/files/filename.h"

namespace check {
namespace {

namespace fs = std::filesystem;

constexpr char kFileName[] = "lumetra-check.toml";
constexpr size_t kMostBytes = 64 << 10;

std::string At(const toml::node& node, const std::string& message) {
    return std::to_string(node.source().begin.line) + ": " + message;
}

std::string ReadCodes(const toml::node& node, CodeSet* codes) {
    const toml::array* list = node.as_array();
    if (!list) return At(node, "a list of codes is expected");
    for (const toml::node& element : *list) {
        const auto name = element.value<std::string>();
        const std::string error = name ? AddCodes(*name, codes) : "a code is expected";
        if (!error.empty()) return At(element, error);
    }
    return "";
}

std::string ReadSetting(std::string_view key, const toml::node& node, Rules* rules) {
    if (key == "ignore") return ReadCodes(node, &rules->ignore);
    if (key == "select") {
        const std::string error = ReadCodes(node, &rules->select.emplace());
        return error.empty() && rules->select->none() ? At(node, "no code given") : error;
    }
    if (key != "fail-on") return At(node, "unknown setting: " + std::string(key));
    rules->fail_on = SeverityOf(node.value_or(std::string_view()));
    return rules->fail_on ? "" : At(node, "fail-on is error, warning or note");
}

// *exists: whether there is such a regular file. Returns an error message, or an empty string.
std::string ReadFile(const std::string& path, bool* exists, std::string* text) {
    std::error_code error;
    *exists = fs::is_regular_file(path, error);  // opening a pipe would wait
    if (!*exists) return "";
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rbe"), std::fclose);
    if (!file) return std::string("1: ") + std::strerror(errno);
    text->resize(kMostBytes);
    text->resize(std::fread(text->data(), 1, text->size(), file.get()));
    if (std::ferror(file.get())) return "1: cannot be read";
    return text->size() == kMostBytes ? "1: too large" : "";
}

}  // namespace

std::string AddCodes(std::string_view list, CodeSet* codes) {
    while (!list.empty()) {
        const size_t comma = std::min(list.find(','), list.size());
        const std::string_view name = list.substr(0, comma);
        const auto index = IndexOfCode(name);
        if (!index) return "unknown code: " + std::string(name);
        codes->set(*index);
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    return "";
}

std::string ReadSettings(std::string_view text, Rules* rules) {
    try {
        const toml::table table = toml::parse(text);
        for (const auto& [key, node] : table) {
            const std::string error = ReadSetting(key.str(), node, rules);
            if (!error.empty()) return error;
        }
        return "";
    } catch (const toml::parse_error& error) {
        return std::to_string(error.source().begin.line) + ": " + std::string(error.description());
    }
}

const SettingsFinder::Found& SettingsFinder::InFolder(const std::string& folder) {
    const auto [it, fresh] = folders_.try_emplace(folder);
    Found& found = it->second;
    if (!fresh) return found;
    const std::string path = (folder == "/" ? "" : folder) + "/" + kFileName;
    bool exists = false;
    std::string text, error = ReadFile(path, &exists, &text);
    if (exists) {
        if (error.empty()) error = ReadSettings(text, &found.rules);
        if (!error.empty()) found.error = path + ":" + error;
    } else if (folder.size() > 1) {
        found = InFolder(FolderOf(folder));
    }
    return found;
}

std::string SettingsFinder::Find(const std::string& chart, const Rules& command_line, Rules* rules) {
    std::error_code unknown;
    const std::string folder = fs::weakly_canonical(FolderOf(AbsolutePath(chart)), unknown);
    const Found found = folder.empty() ? Found() : InFolder(folder);
    *rules = found.rules;
    rules->ignore |= command_line.ignore;
    if (command_line.select) rules->select = command_line.select;
    if (command_line.fail_on) rules->fail_on = command_line.fail_on;
    return found.error;
}

}  // namespace check
